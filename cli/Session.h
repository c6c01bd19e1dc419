#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "cli/Options.h"
#include "cli/TerminalDialog.h"
#include "core/Globals.h"
#include "platform/Clock.h"
#include "platform/ShortDate.h"
#include "start/Language.h"
#include "start/StartUp.h"
#include "start/modINIFile.h"

namespace varnlog::cli {

/// The job cannot be done. `what()` is the reason, or empty when it has been shown already.
class JobError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The program's start-up and shut-down without windows. Settings are read and never written, but for the
/// log's state when it lacks the one that this workstation has seen.
class Session {
 public:
  /// Makes the program folder the current one and chooses the language. Throws JobError.
  explicit Session(const Options& options);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  enum class Access {
    kRead,  // read-only where the file cannot be written
    kWrite,
  };

  /// Whether a job needs the imaging suite, besides for finding a log that nobody named.
  enum class Suite { kForTheLog, kAlways };

  // Each of these throws JobError when it fails.

  /// Finds the files, reads the settings and opens the log workspace.
  void Start(Suite suite);
  /// The log workspace alone, for a job that needs neither imaging suite nor settings.
  void OpenWorkspace();
  /// Makes an empty default log, and says so, when there is none and neither the settings nor the user name
  /// another. A log that is named and not there is never replaced by an empty one.
  void InstallDefaultLog();
  void RequireLogFile();
  /// Fails for a log other than the one that the suite's exposures belong in.
  void RequireOwnLog();
  /// Says that the log has to be converted first, if it is one of the earlier program.
  void RefuseOldLog();
  /// Fails when the log lies on a server, which sees to such work itself.
  void RefuseServersWork();
  /// Opens and checks the log; an old layout is brought up to date where the file can be written.
  void OpenLog(Access access);
  /// Opens the log without bringing anything in it up to date.
  void OpenAsItIs();
  void CloseLog();

  [[nodiscard]] const std::string& LogFile() const { return globals_.strDataFileGl; }
  /// Whether it is a log of the earlier program, which can only be read.
  [[nodiscard]] bool LogIsOld() const;
  /// Whether this user may write to the log's file.
  [[nodiscard]] bool LogIsWritable() const;
  [[nodiscard]] dao::Database& Log() { return *Engine().Database(); }
  [[nodiscard]] db::CJetEngine& Engine() { return *globals_.LogEngineGl; }

  [[nodiscard]] std::string Text(core::TextKey key, const core::Placeholders& values = {}) const;
  /// Shows the text of `key`, filled, then throws JobError.
  [[noreturn]] void Fail(core::TextKey key, const core::Placeholders& values = {});

  /// Shows `message`, then throws JobError.
  [[noreturn]] void FailWith(const std::string& message);

  /// Says that the log could not be opened, and why, then throws JobError. `error` is the engine's number.
  [[noreturn]] void FailToOpen(std::int32_t error);

  [[nodiscard]] core::Globals& globals() { return globals_; }
  [[nodiscard]] const core::Globals& globals() const { return globals_; }
  [[nodiscard]] const start::Language& texts() const { return texts_; }
  [[nodiscard]] const start::modINIFile& ini() const { return ini_; }
  /// Shows how far a long job over the exposures is.
  [[nodiscard]] const seals::Progress& Progress() const { return progress_; }
  [[nodiscard]] TerminalDialog& user() { return user_; }
  [[nodiscard]] const platform::Clock& clock() const { return clock_; }
  [[nodiscard]] const platform::ShortDate& shortDate() const { return shortDate_; }

 private:
  void EnterProgramFolder();
  void ChooseLanguage();

  core::Globals globals_;
  start::Language texts_{globals_};
  start::modINIFile ini_;
  TerminalDialog user_{texts_};
  platform::SystemClock clock_;
  platform::ShortDate shortDate_ = platform::ShortDate::FromSystem();
  seals::Progress progress_ = [this](std::int64_t done, std::int64_t all) {
    user_.SetRecordCount(all);
    user_.Advance(done);
    return true;
  };
  start::Services services_{ini_, texts_, user_, clock_, progress_};
  std::string fileGiven_;
  std::string configured_;  // the log that the settings name
  std::string ownLog_;      // that one, else the default log
};

}  // namespace varnlog::cli
