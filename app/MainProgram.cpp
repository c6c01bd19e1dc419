#include "app/MainProgram.h"

#include "core/EngineMessages.h"
#include "core/Installation.h"
#include "db/modCommon.h"
#include "intake/UpdateRun.h"
#include "logview/PendingEdits.h"

namespace varnlog::app {

using core::literals::operator""_key;

bool MainProgram::LoadBeforeShow() {
  if (!start::FindHostData(globals_, services_)) return false;
  start::ReadHostSettings(globals_, services_.ini);
  start::LoadSettings(globals_, services_.ini);
  start::InstallDataFile(globals_, services_);
  if (start::OpenLogWorkspace(globals_)) return true;
  services_.Messages().Critical("MN_ERR_DBACCESS"_key);
  return false;
}

void MainProgram::LoadAfterShow() {
  if (db::FileExists(globals_.strDataFileGl)) {
    if (!OpenDataFile(globals_.strDataFileGl)) FileOpen();
    return;
  }
  services_.Messages().Critical("MN_ERR_FILENOTFOUND"_key, {{"strDataFileGl", globals_.strDataFileGl}});
  FileOpen();
}

bool MainProgram::Open(const std::string& file) {
  const start::OpenAs how = start::PrepareDataFile(
      globals_, services_, file, [this](const auto& conversion) { view_.ShowConversion(conversion); });
  const bool isOld = how == start::OpenAs::kOldLog;
  const bool opened =
      how != start::OpenAs::kNothing && start::OpenAndCheckDataFile(globals_, services_, file, isOld);
  if (opened) edits_.Clear();
  if (opened && isOld) start::TellOldLogIsProtected(services_, file);
  view_.RefreshCommands();
  return opened;
}

bool MainProgram::OpenDataFile(const std::string& file) {
  const std::string before = globals_.strDataFileGl;
  if (!Open(file)) return false;
  if (file != before) {
    // Each log remembers its own selection.
    start::SaveSelection(globals_, services_.ini, before);
    start::LoadSelection(globals_, services_.ini, file);
  }
  OfferUpdate();
  start::CheckRememberedSelection(globals_);
  view_.ViewResults();
  view_.RefreshCommands();
  return true;
}

void MainProgram::ReplaceDataFile(const std::string& file) {
  view_.CloseResultWindows();
  CloseVarnlogDB();
  if (OpenDataFile(file)) view_.RememberFile(file);
}

void MainProgram::FileOpen() {
  const auto file = view_.AskDataFile(db::FolderPart(globals_.strDataFileGl));
  if (file) {
    ReplaceDataFile(*file);
  } else {
    services_.user.Beep();
  }
}

void MainProgram::OpenRecentFile(const std::string& file) {
  ReplaceDataFile(file);
}

void MainProgram::RunUpdate() {
  // The modal update dialog lets activations and timer shots through.
  if (updating_) return;
  updating_ = true;
  view_.ShowUpdateRun();
  updating_ = false;
}

void MainProgram::Update() {
  if (intake::ExchangeDataPending(globals_)) {
    globals_.UpdateDeclinedGl = false;
    RunUpdate();
    view_.ViewResults();
  } else {
    services_.Messages().Inform("MN_NOXR"_key);
  }
  view_.FocusLogView();
}

void MainProgram::Select(core::SelectionKind kind) {
  if (!ChooseSelection(globals_, kind, view_)) return;
  view_.ViewResults();
  view_.FocusLogView();
}

void MainProgram::OfferUpdate() {
  intake::SweepExchange(globals_);
  if (globals_.ReadOnlyGl || !intake::ExchangeDataPending(globals_)) return;
  globals_.UpdateDeclinedGl = !services_.Messages().Confirm("RC_XRNOTUPDATED"_key, {}, "RU_XRUPDATE"_key);
  if (globals_.UpdateDeclinedGl) return;
  RunUpdate();
}

void MainProgram::UpdateAfterActivation() {
  if (updating_ || !view_.LogViewLoaded() || !intake::ExchangeDataPending(globals_)) return;
  RunUpdate();
  view_.ViewResults();
}

bool MainProgram::ConfirmQuit() {
  return !services_.Messages().Confirm("RC_QUIT"_key);
}

void MainProgram::WriteBackEdits() {
  const auto& log = globals_.LogEngineGl->Database();
  if (!log || edits_.Count() == 0) return;
  const logview::FlushResult result = logview::FlushPendingEdits(*log, edits_, services_.user);
  if (!result.error) return;
  services_.Messages().ShowText(core::EngineErrorText(*result.error));
}

bool MainProgram::CloseVarnlogDB() {
  if (!globals_.LogEngineGl || !globals_.LogEngineGl->Database()) return false;
  WriteBackEdits();
  globals_.LogEngineGl->CloseDBInWorkspace();
  view_.RefreshCommands();
  return true;
}

bool MainProgram::CloseForMaintenance() {
  const std::string pending = std::to_string(edits_.Count());
  if (edits_.Count() > 0 && !services_.Messages().Confirm("PP_ASK_PENDING"_key, {{"lngCount", pending}})) {
    return false;
  }
  view_.CloseResultWindows();
  return CloseVarnlogDB();
}

void MainProgram::ReopenAfterMaintenance() {
  if (Open(globals_.strDataFileGl)) view_.ViewResults();
}

void MainProgram::Unload() {
  intake::SweepExchange(globals_);
  CloseVarnlogDB();
  if (globals_.LogEngineGl && !globals_.LogEngineGl->WorkspaceName().empty()) {
    globals_.LogEngineGl->CloseWorkspace();
  }
  globals_.LogEngineGl.reset();
  start::SaveSettings(globals_, services_.ini);
}

CommandState MainProgram::State() const {
  CommandState state;
  state.dataFileOpen = globals_.LogEngineGl && globals_.LogEngineGl->Database() != nullptr;
  state.readOnly = globals_.ReadOnlyGl;
  state.logViewShown = view_.LogViewLoaded();
  return state;
}

}  // namespace varnlog::app
