#include "start/StartUp.h"

#include "core/EngineMessages.h"
#include "core/Installation.h"
#include "db/modCommon.h"
#include "platform/SafeFile.h"

namespace varnlog::start {

using namespace core::literals;

void RegisterReportComponents(platform::Launcher& launcher, bool hasRegistration) {
  if (!hasRegistration) return;
  launcher.Start({"Regsvr32.exe", "/s", "CraxDrt.DLL"});
  launcher.Start({"Regsvr32.exe", "/s", "CRViewer.DLL"});
}

bool OpenLogWorkspace(core::Globals& globals) {
  globals.LogEngineGl = std::make_unique<db::CJetEngine>();
  globals.LogEngineGl->SetWorkgroupPath(core::DeliveredFile(globals, core::kWorkgroupFile));
  if (globals.AuthorGl.account.empty()) {
    globals.AuthorGl = platform::CurrentAuthor();
    globals.AuthorGl.program = "varnlog " VARNLOG_VERSION;
  }
  globals.LogEngineGl->OpenWorkspace("MyWs", "Admin", "");
  return !globals.LogEngineGl->WorkspaceName().empty();
}

bool InstallDataFile(const core::Globals& globals, const Services& services) {
  platform::SweepUnfinished(platform::ToPath(globals.strDataFileGl));
  // A log that cannot be looked at is not missing: the journal beside it may be its own.
  std::error_code ignored;
  const auto log = std::filesystem::symlink_status(platform::ToPath(globals.strDataFileGl), ignored);
  if (log.type() != std::filesystem::file_type::not_found) return true;
  const std::filesystem::path emptyLog = platform::ToPath(core::DeliveredFile(globals, core::kEmptyLog));
  // A journal of a log that was moved away would be applied to the new one.
  try {
    dao::DBEngine::PutJournalAside(globals.strDataFileGl);
  } catch (const dao::EngineError& failure) {
    services.Messages().ShowText(core::EngineErrorText(services.texts, failure));
    return false;
  }
  // Never over a log that another workstation has put there meanwhile.
  const std::error_code error = platform::CopyWholeFile(emptyLog, platform::ToPath(globals.strDataFileGl),
                                                        platform::IfTaken::kFail, {});
  if (!error || db::FileExists(globals.strDataFileGl)) return true;
  services.Messages().Critical("MN_ERR_DBINSTALL"_key, {{"strDataFileGl", globals.strDataFileGl}});
  return false;
}

bool IsOtherLog(const core::Globals& globals) {
  const std::filesystem::path log = platform::ToPath(globals.strDataFileGl).lexically_normal();
  const auto is = [&log](const std::string& file) {
    return log == platform::ToPath(file).lexically_normal();
  };
  return !is(DefaultDataFile(globals)) && !is(globals.StartFileGl);
}

void CheckRememberedSelection(core::Selection& selection) {
  if (!selection.IsComplete()) selection.SortSelectionGl = core::SelectionKind::kAll;
}

bool HostToothScheme::SchemeUS() const {
  return ini_.ReadInteger("Config", "SchemeUS", core::InSuiteFolder(globals_, core::kSuiteSettings)) != 0;
}

}  // namespace varnlog::start
