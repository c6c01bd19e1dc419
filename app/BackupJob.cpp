#include "app/BackupJob.h"

#include <utility>

#include "core/Installation.h"
#include "platform/Files.h"
#include "platform/Process.h"
#include "ui/QtText.h"

namespace varnlog::app {

namespace {

// Beside this program, where only administrators may exchange it; else in the program folder.
std::string CommandLineProgram(const core::Globals& globals) {
  const std::string name = platform::ProgramFile("varnlogctl");
  const std::filesystem::path beside = platform::ExecutableFolder() / platform::ToPath(name);
  std::error_code error;
  return std::filesystem::exists(beside, error) ? platform::FromPath(beside)
                                                : core::InProgramFolder(globals, name);
}

}  // namespace

bool BackupJob::Start(const std::string& folder, Ended ended) {
  if (IsRunning()) return false;
  QObject::disconnect(&process_, nullptr, nullptr, nullptr);
  const auto tell = [this, ended = std::move(ended)] {
    const bool made = process_.error() != QProcess::FailedToStart &&
                      process_.exitStatus() == QProcess::NormalExit && process_.exitCode() == 0;
    const QByteArray said = made ? process_.readAllStandardOutput() : process_.readAllStandardError();
    ended(made, said.isEmpty() ? ui::FromQString(process_.errorString()) : said.trimmed().toStdString());
  };
  QObject::connect(&process_, &QProcess::finished, &process_, tell);
  QObject::connect(&process_, &QProcess::errorOccurred, &process_, [tell](QProcess::ProcessError error) {
    if (error == QProcess::FailedToStart) tell();  // nothing has finished that never began
  });
  process_.start(ui::ToQString(CommandLineProgram(globals_)),
                 {"--folder", ui::ToQString(globals_.ProgramFolderGl), "--file",
                  ui::ToQString(globals_.strDataFileGl), "backup", "--to", ui::ToQString(folder)});
  return true;
}

}  // namespace varnlog::app
