#include "app/Help.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include <QApplication>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QScreen>
#include <QWindow>

#include "app/HelpFile.h"
#include "db/modCommon.h"
#include "ui/HelpTopic.h"
#include "ui/QtText.h"

namespace varnlog::app {

using core::literals::operator""_key;

namespace {

// What a window manager puts around a window.
constexpr QMargins kFrame(8, 40, 8, 8);

/// The largest of the four parts of the screen beside `taken`.
QRect LargestRoom(const QRect& screen, const QRect& taken) {
  QRect rooms[] = {screen, screen, screen, screen};
  rooms[0].setBottom(taken.top());
  rooms[1].setTop(taken.bottom());
  rooms[2].setRight(taken.left());
  rooms[3].setLeft(taken.right());
  const auto area = [](const QRect& room) {
    return room.isValid() ? static_cast<std::int64_t>(room.width()) * room.height() : 0;
  };
  return std::ranges::max(rooms, {}, area).marginsRemoved(kFrame);
}

}  // namespace

Help::Help(const core::Globals& globals, const start::Services& services)
    : globals_(globals), services_(services), formPos_(services.ini) {
  qApp->installEventFilter(this);
}

Help::~Help() {
  if (!window_) return;
  PlaceWhereItWas();
  formPos_.SaveForm();
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
  const QWidget* dialog = QApplication::activeModalWidget();
  if (dialog != nullptr) {
    PlaceBeside(*dialog);
  } else {
    PlaceWhereItWas();
  }
  window_->show();
  // A modal dialog blocks every window but those that belong to it.
  window_->windowHandle()->setTransientParent(dialog != nullptr ? dialog->windowHandle() : nullptr);
  window_->raise();
  window_->activateWindow();
}

void Help::PlaceBeside(const QWidget& dialog) {
  const QRect screen = dialog.screen()->availableGeometry();
  const auto* box = dialog.findChild<QDialogButtonBox*>();
  const QRect buttons =
      box == nullptr ? dialog.frameGeometry() : QRect(box->mapToGlobal(QPoint()), box->size());
  if (!ownPlace_) ownPlace_ = window_->isMaximized() ? window_->normalGeometry() : window_->geometry();
  const QSize wanted = ownPlace_->size();
  QRect room = LargestRoom(screen, dialog.frameGeometry());
  if (room.width() < wanted.width() / 2 || room.height() < wanted.height() / 2) {
    room = LargestRoom(screen, buttons);
  }
  window_->setWindowState(Qt::WindowNoState);
  window_->setGeometry({room.topLeft(), wanted.boundedTo(room.size())});
}

void Help::PlaceWhereItWas() {
  if (const auto place = std::exchange(ownPlace_, std::nullopt)) window_->setGeometry(*place);
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
  ShowPage(HelpPageOf(ui::FromQString(dialog->objectName()), ui::HelpTopicOf(*dialog)));
  return true;
}

}  // namespace varnlog::app
