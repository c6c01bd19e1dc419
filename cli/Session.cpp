#include "cli/Session.h"

#include <filesystem>
#include <system_error>

#include "core/EngineMessages.h"
#include "core/Installation.h"
#include "db/dao/ServerLink.h"
#include "db/modCommon.h"
#include "legacy/LoadTables.h"
#include "legacy/OldFile.h"
#include "platform/Files.h"
#include "start/SealedLog.h"

namespace varnlog::cli {

namespace {

using namespace core::literals;

}  // namespace

Session::Session(const Options& options) {
  if (!options.file.empty()) fileGiven_ = FromCurrentFolder(options.file);
  core::SetProgramFolder(globals_, options.folder);
  EnterProgramFolder();
  legacy::InstallJetFormat();
  ChooseLanguage();
}

Session::~Session() {
  if (globals_.LogEngineGl) {
    CloseLog();
    if (!Engine().WorkspaceName().empty()) Engine().CloseWorkspace();
  }
  user_.Flush();
  texts_.CloseLanguage();
}

void Session::EnterProgramFolder() {
  if (!db::ChangeToFolder(globals_.ProgramFolderGl)) {
    throw JobError("the program folder " + globals_.ProgramFolderGl + " cannot be entered");
  }
}

void Session::ChooseLanguage() {
  if (!texts_.InitLanguage()) {
    throw JobError("Couldn't access language ressources. Application is terminating now. (" +
                   texts_.InitError() + ")");
  }
  texts_.SetLanguage(ini_.ReadString("App", "Language", globals_.IniFileGl));
  ini_ = start::modINIFile(globals_.LanguageGl);
}

void Session::Start(Suite suite) {
  configured_ = start::ConfiguredDataFile(globals_, ini_);
  // The suite's library runs in this process: it is not loaded for a log that is named without it.
  const bool logIsNamed = !fileGiven_.empty() || !configured_.empty();
  if (suite == Suite::kAlways || !logIsNamed) {
    if (!start::FindHostData(globals_, services_)) throw JobError("");
  }
  start::ReadHostSettings(globals_, ini_);
  start::LoadSettings(globals_, ini_);
  ownLog_ = configured_.empty() ? globals_.strDataFileGl : configured_;
  globals_.strDataFileGl = fileGiven_.empty() ? ownLog_ : fileGiven_;
  OpenWorkspace();
}

void Session::OpenWorkspace() {
  if (!start::OpenLogWorkspace(globals_)) Fail("MN_ERR_DBACCESS"_key);
}

void Session::InstallDefaultLog() {
  if (!fileGiven_.empty() || !configured_.empty()) return;
  std::error_code error;
  const bool isMissing = !std::filesystem::exists(platform::ToPath(LogFile()), error) && !error;
  if (!start::InstallDataFile(globals_, services_)) throw JobError("");
  if (isMissing) services_.Messages().Inform("VC_NEWLOG"_key, {{"strFile", LogFile()}});
}

void Session::RequireLogFile() {
  if (db::FileExists(LogFile())) return;
  const bool isConfigured = fileGiven_.empty() && !configured_.empty();
  Fail(isConfigured ? "VC_ERR_LOGGONE"_key : "VC_ERR_NODATAFILE"_key, {{"strFile", LogFile()}});
}

void Session::RequireOwnLog() {
  if (fileGiven_.empty() || platform::SameFile(platform::ToPath(fileGiven_), platform::ToPath(ownLog_))) {
    return;
  }
  Fail("VC_ERR_OTHERLOG"_key, {{"strFile", fileGiven_}, {"strDataFile", ownLog_}});
}

bool Session::LogIsWritable() const {
  std::error_code error;
  return platform::File::Open(platform::ToPath(LogFile()), platform::File::Mode::kReadWrite, error).IsOpen();
}

bool Session::LogIsOld() const {
  return legacy::IsJetFile(platform::ToPath(LogFile()));
}

void Session::RefuseOldLog() {
  if (LogIsOld()) Fail("VC_ERR_CONVERT"_key, {{"strFile", LogFile()}});
}

void Session::RefuseServersWork() {
  if (dao::IsServerLink(LogFile()))
    FailWith(core::EngineErrorText(texts_, dao::ErrorNumber::kServersOwn, {}));
}

void Session::OpenLog(Access access) {
  RequireLogFile();
  if (access == Access::kWrite) RefuseOldLog();
  const bool readOnly = access == Access::kRead && (LogIsOld() || !LogIsWritable());
  if (start::OpenAndCheckDataFile(globals_, services_, LogFile(), readOnly) != start::Opened::kYes) {
    throw JobError("");
  }
  // Once: the only setting that is ever written here.
  if (access == Access::kWrite && !start::CheckLastHead(globals_, services_))
    start::RememberHead(globals_, ini_);
}

void Session::OpenAsItIs() {
  RequireLogFile();
  const bool readOnly = LogIsOld() || !LogIsWritable();
  const auto error = Engine().OpenDBInWorkspace(LogFile(), false, readOnly);
  if (error != 0) FailToOpen(error);
}

void Session::CloseLog() {
  if (Engine().Database()) Engine().CloseDBInWorkspace();
}

std::string Session::Text(core::TextKey key, const core::Placeholders& values) const {
  return core::FilledText(texts_, key, values);
}

void Session::Fail(core::TextKey key, const core::Placeholders& values) {
  FailWith(Text(key, values));
}

void Session::FailToOpen(std::int32_t error) {
  const bool isInUse = error == static_cast<std::int32_t>(dao::ErrorNumber::kFileInUse);
  const core::TextKey key = isInUse ? "MN_ERR_DBOPENEX"_key : "MN_ERR_DBOPEN"_key;
  const std::string text = Text(key, {{"strFile", LogFile()}});
  FailWith(isInUse ? text : text + " (" + core::EngineErrorText(texts_, Engine()) + ")");
}

void Session::FailWith(const std::string& message) {
  services_.Messages().ShowText(message);
  throw JobError("");
}

}  // namespace varnlog::cli
