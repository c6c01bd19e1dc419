#include "app/MainProgram.h"

#include "db/modCommon.h"
#include "intake/UpdateRun.h"
#include "logview/PendingEdits.h"

namespace varnlog::app {

using core::MessageAnswer;
using core::MessageButtons;
using core::MessageIcon;
using core::literals::operator""_key;

void MainProgram::ShowText(core::TextKey key, MessageIcon icon) {
  core::MsgBox(services_.user, services_.texts, services_.texts.GetText(key), icon);
}

bool MainProgram::LoadBeforeShow() {
  globals_.DataPathGl = start::HostDataPath(globals_.ProgramFolderGl, globals_.LanguageGl);
  if (globals_.DataPathGl.empty()) {
    ShowText("MN_ERR_DBNOTFOUND"_key, MessageIcon::kCritical);
    return false;
  }
  globals_.ExchangeFileGl = globals_.DataPathGl + "varnlog.sdx";
  start::ReadHostSettings(globals_, services_.ini);
  start::LoadSettings(globals_, services_.ini);
  start::InstallDataFile(globals_, services_);
  if (start::OpenLogWorkspace(globals_)) return true;
  ShowText("MN_ERR_DBACCESS"_key, MessageIcon::kCritical);
  return false;
}

void MainProgram::LoadAfterShow() {
  if (db::FileExists(globals_.strDataFileGl)) {
    if (!OpenDataFile(globals_.strDataFileGl)) FileOpen();
    return;
  }
  core::MsgBox(services_.user, services_.texts,
               core::ReplacePlaceholder(services_.texts.GetText("MN_ERR_FILENOTFOUND"_key), "strDataFileGl",
                                        globals_.strDataFileGl),
               MessageIcon::kCritical);
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
    ShowText("MN_NOXR"_key, MessageIcon::kInformation);
  }
  view_.FocusLogView();
}

void MainProgram::Select(core::SelectionKind kind) {
  if (ChooseSelection(globals_, kind, view_)) view_.ViewResults();
}

void MainProgram::OfferUpdate() {
  if (globals_.ReadOnlyGl || !intake::ExchangeDataPending(globals_)) return;
  const MessageAnswer answer = core::MsgBox(
      services_.user, services_.texts, services_.texts.GetText("RC_XRNOTUPDATED"_key), MessageIcon::kQuestion,
      MessageButtons::kYesNo, services_.texts.GetText("RU_XRUPDATE"_key));
  globals_.UpdateDeclinedGl = answer != MessageAnswer::kYes;
  if (globals_.UpdateDeclinedGl) return;
  RunUpdate();
}

void MainProgram::UpdateAfterActivation() {
  if (updating_ || !view_.LogViewLoaded() || !intake::ExchangeDataPending(globals_)) return;
  RunUpdate();
  view_.ViewResults();
}

bool MainProgram::ConfirmQuit() {
  return core::MsgBox(services_.user, services_.texts, services_.texts.GetText("RC_QUIT"_key),
                      MessageIcon::kQuestion, MessageButtons::kYesNo) == MessageAnswer::kNo;
}

void MainProgram::WriteBackEdits() {
  const auto& log = globals_.LogEngineGl->Database();
  if (!log || edits_.Count() == 0) return;
  const logview::FlushResult result = logview::FlushPendingEdits(*log, edits_, services_.user);
  if (!result.error) return;
  core::MsgBox(services_.user, services_.texts,
               std::to_string(static_cast<int>(result.error->number())) + ": " + result.error->what(),
               MessageIcon::kCritical);
}

bool MainProgram::CloseVarnlogDB() {
  if (!globals_.LogEngineGl || !globals_.LogEngineGl->Database()) return false;
  WriteBackEdits();
  globals_.LogEngineGl->CloseDBInWorkspace();
  view_.RefreshCommands();
  return true;
}

bool MainProgram::CloseForMaintenance() {
  if (edits_.Count() > 0) {
    const std::string text = core::ReplacePlaceholder(services_.texts.GetText("PP_ASK_PENDING"_key),
                                                      "lngCount", std::to_string(edits_.Count()));
    if (core::MsgBox(services_.user, services_.texts, text, MessageIcon::kQuestion, MessageButtons::kYesNo) !=
        MessageAnswer::kYes) {
      return false;
    }
  }
  view_.CloseResultWindows();
  return CloseVarnlogDB();
}

void MainProgram::ReopenAfterMaintenance() {
  if (Open(globals_.strDataFileGl)) view_.ViewResults();
}

void MainProgram::Unload() {
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
