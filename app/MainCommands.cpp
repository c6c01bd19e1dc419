#include "app/ExportCommand.h"
#include "app/Libraries.h"
#include "app/frmMDIMain.h"
#include "app/frmProperties.h"
#include "app/frmVerify.h"
#include "logview/LaterEntries.h"
#include "report/frmPreview.h"
#include "ui/QtText.h"
#include "ui/frmAbout.h"

// What each command of the main window runs.

namespace varnlog::app {

using core::SelectionKind;
using core::literals::operator""_key;

namespace {

const std::map<CommandId, SelectionKind> kSelections = {
    {CommandId::mnuSortAll, SelectionKind::kAll},
    {CommandId::mnuSortDateAll, SelectionKind::kPeriod},
    {CommandId::mnuSortPatAll, SelectionKind::kPatient},
    {CommandId::mnuSortPatPeriod, SelectionKind::kPatientPeriod},
    {CommandId::mnuSortDateAllXI, SelectionKind::kPeriodXI},
    {CommandId::mnuSortDateAllXP, SelectionKind::kPeriodXP},
    {CommandId::mnuSortDateAllXC, SelectionKind::kPeriodXC},
    {CommandId::mnuSortDateAllXS, SelectionKind::kPeriodXS},
    {CommandId::mnuSortDateAllXV, SelectionKind::kPeriodXV},
};

}  // namespace

void frmMDIMain::Run(CommandId id) {
  // What stands in an open editor is an entry like any other: it is stored before rows are read or printed.
  if (results_ && !results_->CommitEdit()) return;
  if (const auto selection = kSelections.find(id); selection != kSelections.end()) {
    program_.Select(selection->second);
    return;
  }
  switch (id) {
    case CommandId::mnuFileOpen:
      program_.FileOpen();
      break;
    case CommandId::mnuEditUpdate:
      program_.Update();
      break;
    case CommandId::mnuFileEnd:
      close();
      break;
    case CommandId::mnuFileVerify:
      ShowVerify();
      break;
    case CommandId::mnuHelpInfo:
      ShowAbout();
      break;
    case CommandId::mnuHelpOnHelp:
      help_->Show(HelpPart::kHelpOnHelp);
      break;
    case CommandId::mnuHelpContents:
      help_->Show(HelpPart::kContents);
      break;
    case CommandId::mnuHelpIndex:
      help_->Show(HelpPart::kIndex);
      break;
    case CommandId::mnuHelpSearch:
      help_->Show(HelpPart::kSearch);
      break;
    case CommandId::mnuEditFind:
      results_->BeginFind();
      break;
    case CommandId::mnuEditIncomplete:
      results_->SetOnlyIncomplete(!results_->OnlyIncomplete());
      RefreshCommands();
      break;
    case CommandId::mnuEditNextMissing:
      results_->GoToMissing(1);
      break;
    case CommandId::mnuEditPreviousMissing:
      results_->GoToMissing(-1);
      break;
    case CommandId::mnuFileExport:
      ExportShownRows();
      break;
    case CommandId::mnuFilePrint:
    case CommandId::mnuFilePrintPreview:
    case CommandId::mnuFilePrintSetup:
      RunPrint(id);
      break;
    default:
      RunView(id);
  }
}

report::PrintContext frmMDIMain::PrintContext() {
  const auto open = [this] {
    report::PrintSource source;
    dao::Database& log = *context_.globals.LogEngineGl->Database();
    source.state = report::ReadLogState(log);
    source.rows = results_->ShownRows();
    if (!source.rows) source.rows = log.OpenRecordset(results_->RecordSource(), dao::RecordsetType::kDynaset);
    source.laterEntries =
        [entries = logview::LaterEntries(log, context_.services.texts, context_.scheme, context_.shortDate)](
            std::int64_t exposure, std::string_view type) { return entries.Of(exposure, type); };
    source.headline = results_->Headline();
    return source;
  };
  return {.texts = context_.services.texts,
          .user = context_.services.user,
          .clock = context_.services.clock,
          .shortDate = context_.shortDate,
          .ini = context_.services.ini,
          .iniFile = context_.globals.IniFileGl,
          .site = [this] { return context_.globals.SiteGl; },
          .log = [this] { return context_.globals.strDataFileGl; },
          .open = open};
}

void frmMDIMain::ExportShownRows() {
  const ShownRows shown{results_->ShownRows(), results_->ShownColumns(), results_->Headline()};
  if (!shown.rows) return context_.services.user.Beep();
  ExportShown(this,
              {.texts = context_.services.texts,
               .user = context_.services.user,
               .clock = context_.services.clock,
               .scheme = context_.scheme,
               .shortDate = context_.shortDate,
               .ini = context_.services.ini,
               .iniFile = context_.globals.IniFileGl,
               .site = context_.globals.SiteGl,
               .log = context_.globals.strDataFileGl},
              shown);
}

void frmMDIMain::RunPrint(CommandId id) {
  if (id == CommandId::mnuFilePrintSetup) {
    print_.PageSetup(this);
  } else if (id == CommandId::mnuFilePrint) {
    print_.Print(this);
  } else {
    ShowPreview();
  }
}

void frmMDIMain::ShowPreview() {
  report::frmPreview* preview = print_.Preview(this);
  if (preview != nullptr) AddChild(preview);
}

void frmMDIMain::RunView(CommandId id) {
  core::Globals& globals = context_.globals;
  switch (id) {
    case CommandId::mnuViewToolbar:
      globals.OptTbrVisible = !globals.OptTbrVisible;
      ApplyViewOptions();
      break;
    case CommandId::mnuViewStatusbar:
      globals.OptSbrVisible = !globals.OptSbrVisible;
      ApplyViewOptions();
      break;
    case CommandId::mnuViewBigIcons:
      globals.OptBigIcons = !globals.OptBigIcons;
      ApplyViewOptions();
      break;
    case CommandId::mnuViewHistory:
      globals.OptHistoryVisible = !globals.OptHistoryVisible;
      ApplyViewOptions();
      break;
    case CommandId::mnuViewLoad:
      ViewResults();
      FocusLogView();
      break;
    case CommandId::mnuViewProperties:
      ShowProperties();
      break;
    default:
      break;
  }
}

void frmMDIMain::ShowProperties() {
  PropertiesHost host;
  host.closeLog = [this] { return program_.CloseForMaintenance(); };
  host.reopenLog = [this] {
    program_.ReopenAfterMaintenance();
    if (results_) results_->ReloadGrid();
  };
  frmProperties dialog(this, context_.globals, context_.services, host);
  dialog.exec();
  if (results_) results_->ApplyReadOnly();
  RefreshCommands();
}

void frmMDIMain::ShowVerify() {
  frmVerify(this, *context_.globals.LogEngineGl->Database(), context_.services.texts).exec();
}

void frmMDIMain::ShowAbout() {
  ui::frmAbout dialog(context_.services.texts, VARNLOG_VERSION, UsedLibraries(), this);
  dialog.exec();
}

void frmMDIMain::BuildHistory() {
  addDockWidget(Qt::BottomDockWidgetArea, history_);
  history_->hide();
  // Its own button hides it as well.
  connect(history_->toggleViewAction(), &QAction::toggled, this, [this](bool isShown) {
    context_.globals.OptHistoryVisible = isShown;
    actions_.at(CommandId::mnuViewHistory)->setChecked(isShown);
    CurrentRowChanged();
  });
  historyTimer_.setSingleShot(true);
  historyTimer_.setInterval(0);
  connect(&historyTimer_, &QTimer::timeout, this, &frmMDIMain::ShowHistory);
}

// Rows that are only passed on the way are not read.
void frmMDIMain::CurrentRowChanged() {
  if (context_.globals.OptHistoryVisible && !unloading_) historyTimer_.start();
}

void frmMDIMain::ShowHistory() {
  const auto log = context_.globals.LogEngineGl ? context_.globals.LogEngineGl->Database() : nullptr;
  if (!results_ || !log) return history_->Clear();
  history_->Show(*log, results_->CurrentExposure());
}

}  // namespace varnlog::app
