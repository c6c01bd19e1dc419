#include <QMenuBar>
#include <QStatusBar>

#include "app/frmMDIMain.h"
#include "ui/QtText.h"
#include "ui/Theme.h"

// The main window's menus, toolbar, status bar and panes, built from the tables of the commands.

namespace varnlog::app {

using core::TextKey;
using core::literals::operator""_key;
using ui::Caption;

namespace {

constexpr int kPanelMargin = 4;

QString QView(std::string_view text) {
  return ui::ToQString(text);
}

}  // namespace

void frmMDIMain::BuildActions() {
  for (const CommandDef& command : AllCommands()) {
    auto* action = new QAction(Caption(context_.services.texts, TextKey(command.textKey)), this);
    action->setObjectName(QView(command.name));
    if (!command.shortcut.empty()) action->setShortcut(QKeySequence(QView(command.shortcut)));
    action->setCheckable(command.isChecked);
    // A keyboard user opens the File menu and leaves it again; macOS-like guessing by name is not wanted.
    action->setMenuRole(QAction::NoRole);
    connect(action, &QAction::triggered, this, [this, id = command.id] { Run(id); });
    actions_.emplace(command.id, action);
  }
  for (const ToolbarButton& button : Toolbar()) {
    if (button.key.empty()) continue;
    QAction* action = actions_.at(button.command);
    QString tip = Caption(context_.services.texts, TextKey(button.tooltipKey));
    if (!action->shortcut().isEmpty()) {
      tip += QStringLiteral(" (%1)").arg(action->shortcut().toString(QKeySequence::NativeText));
    }
    action->setToolTip(tip);
  }
}

void frmMDIMain::BuildMenus() {
  for (const MenuDef& definition : Menus()) {
    QMenu* menu = menuBar()->addMenu(Caption(context_.services.texts, TextKey(definition.textKey)));
    menu->setObjectName(QView(definition.name));
    for (const MenuEntry& entry : definition.entries) {
      switch (entry.kind) {
        case MenuEntry::Kind::kCommand:
          menu->addAction(actions_.at(entry.command));
          break;
        case MenuEntry::Kind::kSeparator:
          menu->addSeparator();
          break;
        case MenuEntry::Kind::kRecentFiles:
          recentMenu_ = menu;
          recentEnd_ = menu->addSeparator();
          break;
      }
    }
  }
}

void frmMDIMain::BuildToolbar() {
  tlbStandard_->setObjectName("tlbStandard");
  tlbStandard_->setWindowTitle(Caption(context_.services.texts, "MN_TOOLBAR"_key));
  for (const CommandDef& command : AllCommands()) {
    if (!command.icon.empty()) actions_.at(command.id)->setIcon(ui::ThemedIcon(QView(command.icon)));
  }
  std::vector<ui::ToolbarItem> items;
  for (const ToolbarButton& button : Toolbar()) {
    items.push_back({QView(button.key), button.key.empty() ? nullptr : actions_.at(button.command)});
  }
  tlbStandard_->Build(items, context_.globals.OptBigIcons);
  if (tlbStandard_->parent() == nullptr) addToolBar(tlbStandard_);
}

void frmMDIMain::BuildStatusBar() {
  const auto panel = [this](const char* name) {
    auto* label = new QLabel;
    label->setObjectName(name);
    label->setMargin(kPanelMargin);
    statusBar()->addPermanentWidget(label);
    return label;
  };
  statusBar()->setAccessibleName(Caption(context_.services.texts, "MN_STATUSBAR"_key));
  filePanel_ = new QLabel;
  filePanel_->setObjectName("pnlFile");
  filePanel_->setTextFormat(Qt::PlainText);
  filePanel_->setMargin(kPanelMargin);
  // A long path is cut by the window rather than keeping the window from getting narrower.
  filePanel_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  statusBar()->addWidget(filePanel_, 1);
  otherPanel_ = panel("pnlOtherLog");
  otherPanel_->setText(Caption(context_.services.texts, "MN_OTHERLOG"_key));
  otherPanel_->setToolTip(Caption(context_.services.texts, "MN_OTHERLOGTIP"_key));
  pendingPanel_ = panel("pnlPending");
  pendingPanel_->setToolTip(Caption(context_.services.texts, "MN_STATUS_PENDINGTIP"_key));
  readOnlyPanel_ = panel("pnlReadOnly");
  waitingPanel_ = panel("pnlWaiting");
  waitingPanel_->setToolTip(Caption(context_.services.texts, "MN_STATUS_WAITINGTIP"_key));
  waitingPanel_->hide();
  noticesPanel_ = panel("pnlNotices");
  noticesPanel_->setToolTip(Caption(context_.services.texts, "MN_STATUS_NOTICESTIP"_key));
  noticesPanel_->hide();
  incompletePanel_ = panel("pnlIncomplete");
  incompletePanel_->setToolTip(Caption(context_.services.texts, "MN_STATUS_INCOMPLETETIP"_key));
  rowsPanel_ = panel("pnlRows");
}

void frmMDIMain::ApplyViewOptions() {
  const core::Globals& globals = context_.globals;
  tlbStandard_->setVisible(globals.OptTbrVisible);
  statusBar()->setVisible(globals.OptSbrVisible);
  history_->setVisible(globals.OptHistoryVisible);
  actions_.at(CommandId::mnuViewToolbar)->setChecked(globals.OptTbrVisible);
  actions_.at(CommandId::mnuViewStatusbar)->setChecked(globals.OptSbrVisible);
  actions_.at(CommandId::mnuViewBigIcons)->setChecked(globals.OptBigIcons);
  actions_.at(CommandId::mnuViewHistory)->setChecked(globals.OptHistoryVisible);
  BuildToolbar();
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

}  // namespace varnlog::app
