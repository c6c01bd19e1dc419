#include "start/StartUp.h"

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
  globals.LogEngineGl->SetWorkgroupPath(
      platform::FromPath(platform::ToPath(globals.ProgramFolderGl) / "system.mdw"));
  globals.LogEngineGl->OpenWorkspace("MyWs", "Admin", "");
  return !globals.LogEngineGl->WorkspaceName().empty();
}

bool InstallDataFile(const core::Globals& globals, const Services& services) {
  if (db::FileExists(globals.strDataFileGl)) return true;
  const std::filesystem::path emptyLog = platform::ToPath(globals.ProgramFolderGl) / "varnlog.md0";
  // Never over a log that another workstation has put there meanwhile.
  const std::error_code error = platform::CopyWholeFile(emptyLog, platform::ToPath(globals.strDataFileGl),
                                                        platform::IfTaken::kFail, {});
  if (!error || db::FileExists(globals.strDataFileGl)) return true;
  services.Messages().Critical("MN_ERR_DBINSTALL"_key, {{"strDataFileGl", globals.strDataFileGl}});
  return false;
}

void CheckRememberedSelection(core::Globals& globals) {
  using Kind = core::SelectionKind;
  const bool hasPeriod = globals.dBegGl.IsSet() && globals.dEndGl.IsSet();
  const bool hasPatient =
      globals.dPatBirthdayGl.IsSet() && !globals.strPatNameGl.empty() && !globals.strPatFirstnameGl.empty();
  bool complete = hasPeriod;
  if (globals.SortSelectionGl == Kind::kAll) complete = true;
  if (globals.SortSelectionGl == Kind::kPatient) complete = hasPatient;
  if (globals.SortSelectionGl == Kind::kPatientPeriod) complete = hasPatient && hasPeriod;
  if (!complete) globals.SortSelectionGl = Kind::kAll;
}

bool HostToothScheme::SchemeUS() const {
  const auto file = platform::ToPath(globals_.ProgramFolderGl) / platform::ToPath("..\\kalvero.ini");
  return ini_.ReadInteger("Config", "SchemeUS", platform::FromPath(file)) != 0;
}

}  // namespace varnlog::start
