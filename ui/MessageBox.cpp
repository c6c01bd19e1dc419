#include "ui/MessageBox.h"

#include <span>

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include "ui/QtText.h"
#include "ui/Theme.h"

namespace varnlog::ui {

using db::literals::operator""_key;

namespace {

struct Button {
  db::MessageAnswer answer;
  QMessageBox::StandardButton standard;
  db::TextKey text;
};

constexpr Button kOk[] = {{db::MessageAnswer::kOk, QMessageBox::Ok, "GL_OK"_key}};
constexpr Button kYesNo[] = {{db::MessageAnswer::kYes, QMessageBox::Yes, "GL_YES"_key},
                             {db::MessageAnswer::kNo, QMessageBox::No, "GL_NO"_key}};
constexpr Button kRetryCancel[] = {{db::MessageAnswer::kRetry, QMessageBox::Retry, "GL_RETRY"_key},
                                   {db::MessageAnswer::kCancel, QMessageBox::Cancel, "GL_CANCEL"_key}};

/// The first is the default, the last is what Escape means.
std::span<const Button> ButtonsOf(db::MessageButtons buttons) {
  switch (buttons) {
    case db::MessageButtons::kYesNo:
      return kYesNo;
    case db::MessageButtons::kRetryCancel:
      return kRetryCancel;
    case db::MessageButtons::kOk:
      break;
  }
  return kOk;
}

QMessageBox::Icon IconOf(db::MessageIcon icon) {
  switch (icon) {
    case db::MessageIcon::kInformation:
      return QMessageBox::Information;
    case db::MessageIcon::kQuestion:
      return QMessageBox::Question;
    case db::MessageIcon::kCritical:
      return QMessageBox::Critical;
    case db::MessageIcon::kNone:
      break;
  }
  return QMessageBox::NoIcon;
}

/// The style's own pictures come in few sizes and are blurred on a fine screen.
void ShowPicture(QMessageBox& box, db::MessageIcon icon) {
  auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgboxex_icon_label"));
  if (label == nullptr || icon == db::MessageIcon::kNone) return;
  const char* name = icon == db::MessageIcon::kQuestion   ? "Question"
                     : icon == db::MessageIcon::kCritical ? "Critical"
                                                          : "Information";
  label->setPixmap(MessagePicture(QLatin1String(name), box));
}

void AddButtons(QMessageBox& box, std::span<const Button> buttons, const db::TextLookup& texts) {
  for (const Button& button : buttons) {
    QPushButton* added = box.addButton(button.standard);
    // The language database may be what the message is about.
    if (const QString text = Caption(texts, button.text); !text.isEmpty()) added->setText(text);
    // Some desktops put signs on standard buttons; the program's other buttons have none.
    added->setIcon(QIcon());
  }
  box.setDefaultButton(buttons.front().standard);
  box.setEscapeButton(buttons.back().standard);
}

}  // namespace

db::MessageAnswer MessageBox::Show(const db::Message& message) {
  while (QApplication::overrideCursor() != nullptr) QApplication::restoreOverrideCursor();
  if (script_) return script_(message);
  QWidget* window = QApplication::activeModalWidget();
  if (window == nullptr) window = QApplication::activeWindow();
  QMessageBox box(window == nullptr ? parent_.data() : window);
  box.setObjectName("MessageBox");
  box.setIcon(IconOf(message.icon));
  ShowPicture(box, message.icon);
  box.setWindowTitle(ToQString(message.title));
  box.setTextFormat(Qt::PlainText);
  box.setText(ToQString(message.text));
  const std::span<const Button> buttons = ButtonsOf(message.buttons);
  AddButtons(box, buttons, texts_);
  const int pressed = box.exec();
  for (const Button& button : buttons) {
    if (button.standard == pressed) return button.answer;
  }
  return buttons.back().answer;
}

void MessageBox::Beep() {
  ++beeps_;
  if (!script_) QApplication::beep();
}

}  // namespace varnlog::ui
