#include "app/Help.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWindow>

#include "app/HelpFile.h"
#include "db/modCommon.h"
#include "ui/QtText.h"

namespace varnlog::app {

using core::literals::operator""_key;

Help::Help(const core::Globals& globals, const start::Services& services)
    : globals_(globals), services_(services), formPos_(services.ini) {
  qApp->installEventFilter(this);
}

Help::~Help() {
  if (window_) formPos_.SaveForm();
}

bool Help::Open() {
  if (window_) return true;
  const std::string file = HelpFile(globals_);
  collection_ = HelpCollection::Open(ui::ToQString(file));
  if (!collection_) {
    services_.Messages().Critical("MN_ERR_HELP"_key, {{"strFile", file}});
    return false;
  }
  window_ = std::make_unique<frmHelp>(*collection_, services_.texts);
  place_ = std::make_unique<PlacedWidget>(*window_);
  formPos_.SetForm(place_.get());
  formPos_.SetIniFile(globals_.IniFileGl);
  formPos_.RestoreForm(true);
  return true;
}

void Help::Present() {
  place_->Uncover();
  window_->show();
  // A modal dialog blocks every window but those that belong to it.
  const QWidget* dialog = QApplication::activeModalWidget();
  window_->windowHandle()->setTransientParent(dialog != nullptr ? dialog->windowHandle() : nullptr);
  window_->raise();
  window_->activateWindow();
}

void Help::Show(HelpPart part) {
  if (!Open()) return;
  Present();
  switch (part) {
    case HelpPart::kContents:
      window_->ShowContents();
      break;
    case HelpPart::kIndex:
      window_->ShowIndex();
      break;
    case HelpPart::kSearch:
      window_->ShowSearch();
      break;
    case HelpPart::kHelpOnHelp:
      window_->ShowPage(QStringLiteral("help"));
      break;
  }
}

void Help::ShowPage(std::string_view name) {
  if (!Open()) return;
  Present();
  window_->ShowPage(ui::ToQString(name));
}

bool Help::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::KeyPress) return false;
  const auto* key = static_cast<const QKeyEvent*>(event);
  if (key->key() != Qt::Key_F1 || key->modifiers() != Qt::NoModifier) return false;
  QWidget* dialog = QApplication::activeModalWidget();
  const auto* widget = qobject_cast<const QWidget*>(watched);
  if (dialog == nullptr || widget == nullptr || widget->window() != dialog) return false;
  ShowPage(HelpPageOf(ui::FromQString(dialog->objectName())));
  return true;
}

}  // namespace varnlog::app
