#include <CLI/CLI.hpp>

#include "backup/Schedule.h"
#include "cli/Command.h"
#include "core/EngineMessages.h"
#include "platform/Files.h"

namespace varnlog::cli {

namespace {

using namespace core::literals;
namespace fs = std::filesystem;

backup::Settings SettingsOf(const Session& session, const Options& options) {
  backup::Settings settings = backup::LoadSettings(session.ini(), session.globals().IniFileGl);
  if (!options.backupFolder.empty()) settings.folder = options.backupFolder;
  if (options.keepCount > 0) settings.keep.count = options.keepCount;
  if (options.keepDays > 0) settings.keep.days = options.keepDays;
  return settings;
}

[[noreturn]] void FailWithEngine(Session& session, core::TextKey key, const dao::EngineError& error) {
  session.Fail(key, {{"strError", core::EngineErrorText(session.texts(), error)}});
}

void RequireSound(Session& session, const fs::path& file, const std::vector<std::string>& wrong,
                  Output& output) {
  for (const std::string& finding : wrong) output.Write(OneLine(finding) + "\n");
  if (!wrong.empty()) session.Fail("BK_ERR_UNSOUND"_key, {{"strFile", platform::FromPath(file)}});
}

std::string DateOf(const Session& session, platform::DateTime newest) {
  return newest.IsSet() ? session.shortDate().Format(newest) : "-";
}

/// Names both, so that nobody takes one for the other.
std::string Question(const Session& session, const backup::Content& before, const backup::Content& after,
                     const fs::path& file) {
  return session.Text("BK_QUESTION"_key, {{"strFile", session.LogFile()},
                                          {"lngOld", std::to_string(before.exposures)},
                                          {"dOld", DateOf(session, before.newest)},
                                          {"strBackup", platform::FromPath(file)},
                                          {"lngNew", std::to_string(after.exposures)},
                                          {"dNew", DateOf(session, after.newest)}});
}

/// A log that is gone or cannot be read is a reason to restore one.
backup::Content ContentIfAny(Session& session) {
  try {
    return backup::ReadContent(session.Engine(), platform::ToPath(session.LogFile()));
  } catch (const dao::EngineError&) {
    return {};
  }
}

}  // namespace

void AddBackupOptions(CLI::App& command, Options& options) {
  command.add_option_function<std::string>(
      "--to", [&options](const std::string& path) { options.backupFolder = FromCurrentFolder(path); },
      "folder for the copies; that of varnlog.ini when not given");
  command.add_option("--keep", options.keepCount, "how many copies stay in any case")
      ->check(CLI::Range(1, 9999));
  command.add_option("--days", options.keepDays, "for how many days the others stay")
      ->check(CLI::Range(1, 99999));
}

void RunBackupCommand(Session& session, const Options& options, Output& output) {
  session.RequireLogFile();
  session.RefuseOldLog();
  session.RefuseServersWork();
  const backup::Settings settings = SettingsOf(session, options);
  if (settings.folder.empty()) session.Fail("BK_ERR_NOFOLDER"_key);
  const fs::path folder = platform::ToPath(settings.folder);
  const fs::path log = platform::ToPath(session.LogFile());
  try {
    const backup::Made made = backup::MakeBackup(session.Engine(), log, folder, session.clock().Now());
    RequireSound(session, made.backup.path, made.wrong, output);
    for (const backup::Backup& old :
         backup::Superfluous(backup::ListBackups(folder, log), settings.keep, session.clock().Now())) {
      backup::Remove(old);
    }
    output.Write(platform::FromPath(made.backup.path) + "\n");
  } catch (const dao::EngineError& error) {
    FailWithEngine(session, "BK_ERR_MAKE"_key, error);
  }
}

void AddRestoreOptions(CLI::App& command, Options& options) {
  command
      .add_option_function<std::string>(
          "backup", [&options](const std::string& path) { options.backupFile = FromCurrentFolder(path); },
          "the copy whose content the log gets")
      ->required();
  command.add_flag("--yes", options.isSure, "do it; without it only what would happen is said");
}

void RunRestoreCommand(Session& session, const Options& options, Output& output) {
  session.RefuseServersWork();
  const fs::path file = platform::ToPath(options.backupFile);
  try {
    RequireSound(session, file, backup::CheckBackup(session.Engine(), file), output);
    const std::string question =
        Question(session, ContentIfAny(session), backup::ReadContent(session.Engine(), file), file);
    if (!options.isSure) session.FailWith(question + " " + session.Text("BK_YES"_key));
    const fs::path kept = backup::Restore(session.Engine(), file, platform::ToPath(session.LogFile()));
    output.Write("restored " + session.LogFile() + "\n");
    if (!kept.empty()) output.Write("kept " + platform::FromPath(kept) + "\n");
  } catch (const dao::EngineError& error) {
    FailWithEngine(session, "BK_ERR_RESTORE"_key, error);
  }
}

}  // namespace varnlog::cli
