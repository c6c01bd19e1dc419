#include <QApplication>
#include <QMenuBar>
#include <QStatusBar>

#include "app/Libraries.h"
#include "app/frmMDIMain.h"
#include "app/frmProperties.h"
#include "ui/QtText.h"
#include "ui/frmAbout.h"

// What each command of the main window runs.

namespace varnlog::app {

using db::SelectionKind;
using db::literals::operator""_key;

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
    case CommandId::mnuHelpInfo:
      ShowAbout();
      break;
    default:
      RunView(id);
  }
}

void frmMDIMain::RunView(CommandId id) {
  db::Globals& globals = context_.globals;
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
    case CommandId::mnuViewLoad:
      if (results_) results_->InitData();
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
  RefreshCommands();
}

void frmMDIMain::ShowAbout() {
  ui::frmAbout dialog(context_.services.texts, VARNLOG_VERSION, UsedLibraries(), this);
  dialog.exec();
}

}  // namespace varnlog::app
