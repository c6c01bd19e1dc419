#pragma once

#include <span>

#include "cli/Options.h"
#include "cli/Output.h"
#include "cli/Session.h"
#include "seals/Verifier.h"

namespace varnlog::cli {

/// One job of varnlogctl.
struct Command {
  const char* name;
  const char* description;
  /// Adds the job's own options; may be nullptr.
  void (*addOptions)(CLI::App& command, Options& options);
  /// Refuses options that make no sense together before anything is opened: throws UsageError; may be
  /// nullptr.
  void (*validate)(const Options& options);
  /// Results go to `output`. Throws JobError, OutputError or dao::EngineError. nullptr for what the program
  /// of documents does.
  void (*run)(Session& session, const Options& options, Output& output);
  /// What it works on.
  enum class Works { kOnFiles, kOnTheLog, kOnLogAndSuite } works = Works::kOnTheLog;
};

/// All of varnlogctl, in the order of the help text.
[[nodiscard]] std::span<const Command> AllCommands();

void AddUpdateOptions(CLI::App& command, Options& options);
void RunUpdateCommand(Session& session, const Options& options, Output& output);
void AddListOptions(CLI::App& command, Options& options);
void RunListCommand(Session& session, const Options& options, Output& output);
void RunStatisticsCommand(Session& session, const Options& options, Output& output);
void AddConvertOptions(CLI::App& command, Options& options);
void RunConvertCommand(Session& session, const Options& options, Output& output);
void RunCheckCommand(Session& session, const Options& options, Output& output);
void AddVerifyOptions(CLI::App& command, Options& options);
void ValidateAnchor(const Options& options);
void RunVerifyCommand(Session& session, const Options& options, Output& output);
/// Writes what the seals of the open log find; throws JobError unless everything fits.
seals::Verification VerifySeals(Session& session, const Options& options, Output& output);
void AddHistoryOptions(CLI::App& command, Options& options);
void RunHistoryCommand(Session& session, const Options& options, Output& output);
void RunCompactCommand(Session& session, const Options& options, Output& output);
void AddServerOptions(CLI::App& command, Options& options);
void RunServerCommand(Session& session, const Options& options, Output& output);
void AddBackupOptions(CLI::App& command, Options& options);
void RunBackupCommand(Session& session, const Options& options, Output& output);
void AddRestoreOptions(CLI::App& command, Options& options);
void RunRestoreCommand(Session& session, const Options& options, Output& output);
void RunRepairCommand(Session& session, const Options& options, Output& output);

}  // namespace varnlog::cli
