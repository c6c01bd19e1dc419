#include <QLocale>
#include <QSysInfo>

#include "app/ExportCommand.h"
#include "app/Libraries.h"
#include "app/StatisticsCommand.h"
#include "app/TakeOverProgress.h"
#include "app/frmMDIMain.h"
#include "app/frmProperties.h"
#include "app/frmSettings.h"
#include "app/frmSupport.h"
#include "app/frmVerify.h"
#include "logview/LaterEntries.h"
#include "report/frmPreview.h"
#include "start/SupportText.h"
#include "ui/QtText.h"
#include "ui/frmAbout.h"

// What each command of the main window runs.

namespace varnlog::app {

using core::literals::operator""_key;

void frmMDIMain::Run(CommandId id) {
  // What stands in an open editor is an entry like any other: it is stored before rows are read or printed.
  if (results_ && !results_->CommitEdit()) return;
  Def(id).run(*this);
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
          .language = [this] { return context_.globals.LanguageGl; },
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
               .log = *context_.globals.LogEngineGl->Database()},
              shown);
}

void frmMDIMain::ShowStatistics() {
  const auto rows = results_->ShownRows();
  if (!rows) return context_.services.user.Beep();
  ShowStatisticsOf(this,
                   {.globals = context_.globals,
                    .services = context_.services,
                    .shortDate = context_.shortDate,
                    .print = print_},
                   *rows, results_->Headline());
}

void frmMDIMain::ShowSettings() {
  frmSettings dialog(this, context_.services.texts, context_.services.ini, context_.globals.IniFileGl);
  if (dialog.exec() != QDialog::Accepted) return;
  if (results_) results_->ApplyColors();
  if (!dialog.IsKept())
    context_.services.Messages().Critical("SE_ERR_WRITE"_key, {{"strFile", context_.globals.IniFileGl}});
}

void frmMDIMain::FindInList() {
  results_->BeginFind();
}

void frmMDIMain::ToggleIncomplete() {
  results_->SetOnlyIncomplete(!results_->OnlyIncomplete());
  RefreshCommands();
}

void frmMDIMain::GoToMissing(int step) {
  results_->GoToMissing(step);
}

void frmMDIMain::SetUpPrinter() {
  print_.PageSetup(this);
}

void frmMDIMain::Print() {
  print_.Print(this);
}

void frmMDIMain::ShowPreview() {
  report::frmPreview* preview = print_.Preview(this);
  if (preview != nullptr) AddChild(preview);
}

void frmMDIMain::Toggle(bool core::Globals::*option) {
  context_.globals.*option = !(context_.globals.*option);
  ApplyViewOptions();
}

void frmMDIMain::ReloadView() {
  ViewResults();
  FocusLogView();
}

void frmMDIMain::ShowHelp(HelpPart part) {
  help_->Show(part);
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
  const auto keep = [this](bool isSound) {
    start::NoteVerified(context_.globals, context_.services.ini, context_.services.clock, isSound);
  };
  frmVerify(this, *context_.globals.LogEngineGl->Database(), context_.services.texts, keep).exec();
}

seals::Progress frmMDIMain::TakeOverProgress() {
  // Gone, and with it the window, when the log is open.
  const auto progress = std::make_shared<app::TakeOverProgress>(this, context_.services.texts);
  return [progress](std::int64_t done, std::int64_t all) {
    progress->Advance(done, all);
    return true;
  };
}

void frmMDIMain::ShowAbout() {
  ui::frmAbout dialog(context_.services.texts, VARNLOG_VERSION, UsedLibraries(), this);
  dialog.exec();
}

void frmMDIMain::ShowSupport() {
  std::vector<std::string> versions = {"varnlog " VARNLOG_VERSION};
  for (const ui::UsedLibrary& library : UsedLibraries())
    versions.push_back(library.name + ' ' + library.version);
  versions.push_back(ui::FromQString(QSysInfo::prettyProductName() + ", " +
                                     QSysInfo::currentCpuArchitecture() + ", " + QLocale::system().name()));
  const std::string information =
      start::SupportText(context_.globals, context_.services.ini, context_.services.texts, versions);
  frmSupport(this, context_.services.texts, information).exec();
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
