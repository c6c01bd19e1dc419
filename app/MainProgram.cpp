#include "app/MainProgram.h"

#include <utility>

#include "core/EngineMessages.h"
#include "core/Installation.h"
#include "db/modCommon.h"
#include "intake/UpdateRun.h"
#include "logview/PendingEdits.h"
#include "start/SealedLog.h"

namespace varnlog::app {

using core::literals::operator""_key;

namespace {

// Each waits as long as the engine waits for a lock.
constexpr int kLockTries = 3;

}  // namespace

bool MainProgram::LoadBeforeShow() {
  if (!IsInspection() && !start::FindHostData(globals_, services_)) return false;
  start::ReadHostSettings(globals_, services_.ini);
  start::LoadSettings(globals_, services_.ini);
  LoadLogSettings();
  if (start::OpenLogWorkspace(globals_)) return true;
  services_.Messages().Critical("MN_ERR_DBACCESS"_key);
  return false;
}

/// A log that was asked for is opened for this run alone, and is never made: the settings keep naming the
/// practice's.
void MainProgram::LoadLogSettings() {
  if (started_.file.empty()) {
    AwaitConfiguredLog();
    start::InstallDataFile(globals_, services_);
    return;
  }
  if (globals_.ConfiguredGl.empty()) globals_.ConfiguredGl = start::DefaultDataFile(globals_);
  globals_.strDataFileGl = started_.file;
  start::LoadSelection(globals_, services_.ini, started_.file);
}

/// Exposures would go unseen into an empty log while the practice's own is merely not connected yet.
void MainProgram::AwaitConfiguredLog() {
  using enum core::MessageAnswer;
  while (!globals_.ConfiguredGl.empty() && !db::FileExists(globals_.ConfiguredGl)) {
    const core::MessageAnswer answer = services_.Messages().Show(
        {.key = "MN_ASK_MISSING"_key,
         .values = {{"strFile", globals_.ConfiguredGl}, {"strDefault", globals_.strDataFileGl}},
         .choices = {{kRetry, "GL_RETRY"_key}, {kOpen, "MN_OPENANOTHER"_key}, {kGoOn, "MN_GOON"_key}}});
    if (answer == kRetry) {
      start::LoadSettings(globals_, services_.ini);
    } else if (answer == kOpen) {
      const auto file = view_.AskDataFile(db::FolderPart(globals_.strDataFileGl));
      if (!file) continue;
      globals_.ConfiguredGl = globals_.strDataFileGl = *file;
      start::LoadSelection(globals_, services_.ini, *file);
    } else {
      return;
    }
  }
}

void MainProgram::LoadAfterShow() {
  if (db::FileExists(globals_.strDataFileGl)) {
    if (OpenDataFile(globals_.strDataFileGl)) {
      view_.RememberFile(globals_.strDataFileGl);
    } else {
      FileOpen();
    }
    return;
  }
  services_.Messages().Critical("MN_ERR_FILENOTFOUND"_key, {{"strDataFileGl", globals_.strDataFileGl}});
  FileOpen();
}

bool MainProgram::Open(const std::string& file) {
  const start::OpenAs how =
      IsInspection() ? start::OpenAs::kLog
                     : start::PrepareDataFile(globals_, services_, file, [this](const auto& conversion) {
                         view_.ShowConversion(conversion);
                       });
  const bool isOld = how == start::OpenAs::kOldLog;
  start::Services services = services_;
  services.progress = view_.TakeOverProgress();
  const start::Opened result =
      how == start::OpenAs::kNothing
          ? start::Opened::kNo
          : start::OpenAndCheckDataFile(globals_, services, file, isOld || IsInspection());
  services.progress = {};
  const bool opened = result == start::Opened::kYes;
  if (opened) edits_.Clear();
  if (opened) {
    newRows_.Forget();
    start::CheckLastHead(globals_, services_);
    start::RememberHead(globals_, services_.ini);
  }
  if (opened && isOld) start::TellOldLogIsProtected(services_, file);
  view_.RefreshCommands();
  return opened || (result == start::Opened::kDamaged && OfferRepair(file));
}

/// True when the log is open afterwards.
bool MainProgram::OfferRepair(const std::string& file) {
  if (offeringRepair_ || IsInspection() ||
      !services_.Messages().Confirm("MN_ASK_REPAIR"_key, {{"strFile", file}}))
    return false;
  const std::string before = std::exchange(globals_.strDataFileGl, file);
  offeringRepair_ = true;
  view_.ShowProperties();
  offeringRepair_ = false;
  if (State().dataFileOpen) return true;
  globals_.strDataFileGl = before;
  return false;
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

void MainProgram::ReplaceDataFile(const std::string& file, OpenFor time) {
  if (!view_.CommitEntry() || !LockCorrections()) return;
  const std::string before = globals_.strDataFileGl;
  view_.CloseResultWindows();
  const bool wasOpen = CloseVarnlogDB();
  if (OpenDataFile(file)) {
    if (time == OpenFor::kGood) globals_.ConfiguredGl = file;
    if (globals_.ConfiguredGl.empty()) globals_.ConfiguredGl = before;
    view_.RememberFile(file);
  } else if (wasOpen && before != file && Open(before)) {
    view_.ViewResults();
  }
}

void MainProgram::FileOpen() {
  const auto file = view_.AskDataFile(db::FolderPart(globals_.strDataFileGl));
  if (file) {
    ReplaceDataFile(*file, OpenFor::kGood);
  } else {
    services_.user.Beep();
  }
}

void MainProgram::OpenFile(const std::string& file, OpenFor time) {
  ReplaceDataFile(file, time);
}

bool MainProgram::RunUpdate() {
  // The modal update dialog lets activations and timer shots through.
  if (updating_) return true;
  updating_ = true;
  newRows_.BeginUpdate(*globals_.LogEngineGl->Database());
  const bool isAnswered = view_.ShowUpdateRun();
  updating_ = false;
  return isAnswered;
}

/// What is shown of a log that cannot be asked stays; that has been said already.
void MainProgram::UpdateAndView() {
  if (RunUpdate()) view_.ViewResults();
}

void MainProgram::Update() {
  view_.ShowNotices();
  if (intake::ExchangeDataPending(globals_)) {
    if (!start::IsOtherLog(globals_) || ConfirmOtherLog()) {
      globals_.UpdateDeclinedGl = false;
      UpdateAndView();
    }
  } else {
    services_.Messages().Inform("MN_NOXR"_key);
  }
  view_.FocusLogView();
}

void MainProgram::Select(core::SelectionKind kind) {
  const core::Selection before = globals_.CurrentSelection();
  if (ChooseSelection(globals_, kind, view_)) ViewInstead(before);
}

void MainProgram::ViewInstead(const core::Selection& before) {
  if (!view_.ViewResults()) globals_.CurrentSelection() = before;
  view_.FocusLogView();
}

void MainProgram::Show(const core::Selection& selection) {
  const core::Selection before = std::exchange(globals_.CurrentSelection(), selection);
  ViewInstead(before);
}

/// The safe answer is the default: an archive copy must not get today's exposures.
bool MainProgram::ConfirmOtherLog() {
  return services_.Messages().Show({.key = "RC_XROTHERLOG"_key,
                                    .values = {{"strFile", globals_.strDataFileGl}},
                                    .icon = core::MessageIcon::kQuestion,
                                    .buttons = core::MessageButtons::kYesNo,
                                    .title = "RU_XRUPDATE"_key,
                                    .lastIsDefault = true}) == core::MessageAnswer::kYes;
}

void MainProgram::OfferUpdate() {
  if (IsInspection()) return;
  intake::SweepExchange(globals_);
  if (globals_.ReadOnlyGl || !intake::ExchangeDataPending(globals_)) return;
  globals_.UpdateDeclinedGl =
      start::IsOtherLog(globals_)
          ? !ConfirmOtherLog()
          : !services_.Messages().Confirm("RC_XRNOTUPDATED"_key, {{"strFile", globals_.strDataFileGl}},
                                          "RU_XRUPDATE"_key);
  if (globals_.UpdateDeclinedGl) return;
  static_cast<void>(RunUpdate());
}

void MainProgram::UpdateAfterActivation() {
  if (updating_ || !view_.LogViewLoaded() || !intake::ExchangeDataPending(globals_)) return;
  UpdateAndView();
}

bool MainProgram::MayTakeInAtOnce() const {
  return !updating_ && !reopening_ && !IsInspection() && State().dataFileOpen && !globals_.ReadOnlyGl &&
         view_.LogViewLoaded() && !start::IsOtherLog(globals_);
}

void MainProgram::TakeInAtOnce() {
  updating_ = true;
  // What came since the last update that the user saw stays marked.
  if (!newRows_.IsMarking()) newRows_.BeginUpdate(*globals_.LogEngineGl->Database());
  const std::int64_t rows = view_.RunQuietUpdate();
  updating_ = false;
  if (rows > 0) view_.ShowRowsInPlace();
}

bool MainProgram::ConfirmQuit() {
  using enum core::MessageAnswer;
  if (edits_.Count() == 0) return !services_.Messages().Confirm("RC_QUIT"_key);
  const core::MessageAnswer answer = services_.Messages().Show(
      {.key = "RC_QUIT_PENDING"_key,
       .values = {{"lngCount", std::to_string(edits_.Count())}, {"strValues", view_.PendingValues()}},
       .icon = core::MessageIcon::kQuestion,
       .choices = {{kYes, "GL_YES"_key}, {kLook, "RC_LOOK"_key}, {kNo, "GL_NO"_key}}});
  if (answer == kLook) view_.ShowPending();
  return answer != kYes;
}

std::optional<dao::EngineError> MainProgram::TryToLock() {
  const auto log = globals_.LogEngineGl ? globals_.LogEngineGl->Database() : nullptr;
  if (!log) return std::nullopt;
  std::optional<dao::EngineError> error;
  for (int tries = 0; tries < kLockTries; ++tries) {
    error = logview::FlushPendingEdits(*log, edits_, services_.user).error;
    if (!error || error->number() != dao::ErrorNumber::kFileInUse) break;
  }
  return error;
}

void MainProgram::LockWithoutAsking() {
  if (edits_.Count() > 0) static_cast<void>(TryToLock());
}

bool MainProgram::LockCorrections() {
  using enum core::MessageAnswer;
  while (edits_.Count() > 0) {
    view_.ShowBusy(true);
    const auto error = TryToLock();
    view_.ShowBusy(false);
    if (!error) return true;
    const core::MessageAnswer answer = services_.Messages().Show(
        {.key = "RC_ERR_LOCK"_key,
         .values = {{"lngCount", std::to_string(edits_.Count())},
                    {"strError", core::EngineErrorText(services_.texts, *error)}},
         .choices = {{kRetry, "GL_RETRY"_key}, {kGoOn, "RC_LEAVEOPEN"_key}, {kCancel, "GL_CANCEL"_key}}});
    if (answer == kGoOn) edits_.Clear();
    if (answer == kCancel) return false;
  }
  return true;
}

void MainProgram::WriteBackEdits() {
  if (const auto error = TryToLock()) {
    services_.Messages().ShowText(core::EngineErrorText(services_.texts, *error));
  }
}

bool MainProgram::CloseVarnlogDB() {
  if (!globals_.LogEngineGl || !globals_.LogEngineGl->Database()) return false;
  WriteBackEdits();
  start::RememberHead(globals_, services_.ini);
  globals_.LogEngineGl->CloseDBInWorkspace();
  view_.RefreshCommands();
  return true;
}

bool MainProgram::CloseForMaintenance() {
  if (!State().dataFileOpen) return true;
  const std::string pending = std::to_string(edits_.Count());
  if (edits_.Count() > 0 && !services_.Messages().Confirm("PP_ASK_PENDING"_key, {{"lngCount", pending}})) {
    return false;
  }
  if (!LockCorrections()) return false;
  view_.CloseResultWindows();
  return CloseVarnlogDB();
}

void MainProgram::ReopenAfterMaintenance() {
  if (Open(globals_.strDataFileGl)) view_.ViewResults();
}

void MainProgram::ReopenReplacedLog() {
  if (reopening_ || !globals_.LogEngineGl || !globals_.LogEngineGl->Database()) return;
  reopening_ = true;
  services_.Messages().Inform("MN_LOGREPLACED"_key, {{"strFile", globals_.strDataFileGl}});
  edits_.Clear();
  view_.CloseResultWindows();
  globals_.LogEngineGl->CloseDBInWorkspace();
  view_.RefreshCommands();
  if (Open(globals_.strDataFileGl)) view_.ViewResults();
  reopening_ = false;
}

void MainProgram::Unload() {
  if (!IsInspection()) intake::SweepExchange(globals_);
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
