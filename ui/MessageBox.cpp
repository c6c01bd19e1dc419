#include "ui/MessageBox.h"

#include <span>
#include <vector>

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>

#include "ui/HelpTopic.h"
#include "ui/QtText.h"
#include "ui/Theme.h"

namespace varnlog::ui {

using core::literals::operator""_key;

namespace {

struct Button {
  core::MessageAnswer answer;
  QMessageBox::StandardButton standard;
  core::TextKey text;
};

constexpr Button kOk[] = {{core::MessageAnswer::kOk, QMessageBox::Ok, "GL_OK"_key}};
constexpr Button kYesNo[] = {{core::MessageAnswer::kYes, QMessageBox::Yes, "GL_YES"_key},
                             {core::MessageAnswer::kNo, QMessageBox::No, "GL_NO"_key}};
constexpr Button kRetryCancel[] = {{core::MessageAnswer::kRetry, QMessageBox::Retry, "GL_RETRY"_key},
                                   {core::MessageAnswer::kCancel, QMessageBox::Cancel, "GL_CANCEL"_key}};

/// The first is the default, the last is what Escape means.
std::span<const Button> ButtonsOf(core::MessageButtons buttons) {
  switch (buttons) {
    case core::MessageButtons::kYesNo:
      return kYesNo;
    case core::MessageButtons::kRetryCancel:
      return kRetryCancel;
    case core::MessageButtons::kOk:
      break;
  }
  return kOk;
}

QMessageBox::Icon IconOf(core::MessageIcon icon) {
  switch (icon) {
    case core::MessageIcon::kInformation:
      return QMessageBox::Information;
    case core::MessageIcon::kQuestion:
      return QMessageBox::Question;
    case core::MessageIcon::kWarning:
      return QMessageBox::Warning;
    case core::MessageIcon::kCritical:
      return QMessageBox::Critical;
    case core::MessageIcon::kNone:
      break;
  }
  return QMessageBox::NoIcon;
}

/// The style's own pictures come in few sizes and are blurred on a fine screen.
void ShowPicture(QMessageBox& box, core::MessageIcon icon) {
  auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgboxex_icon_label"));
  if (label == nullptr || icon == core::MessageIcon::kNone) return;
  const char* name = icon == core::MessageIcon::kQuestion   ? "Question"
                     : icon == core::MessageIcon::kWarning  ? "Warning"
                     : icon == core::MessageIcon::kCritical ? "Critical"
                                                            : "Information";
  label->setPixmap(MessagePicture(QLatin1String(name), box));
}

/// Adds a button for each choice and returns them in the same order.
std::vector<QPushButton*> AddButtons(QMessageBox& box, std::span<const Button> buttons,
                                     const core::TextLookup& texts) {
  std::vector<QPushButton*> added;
  for (const Button& button : buttons) {
    const bool isStandard = button.standard != QMessageBox::NoButton;
    added.push_back(isStandard ? box.addButton(button.standard)
                               : box.addButton(QString(), QMessageBox::ActionRole));
    // The language database may be what the message is about.
    if (const QString text = Caption(texts, button.text); !text.isEmpty()) added.back()->setText(text);
    // Some desktops put signs on standard buttons; the program's other buttons have none.
    added.back()->setIcon(QIcon());
  }
  box.setDefaultButton(added.front());
  box.setEscapeButton(added.back());
  return added;
}

QMessageBox::StandardButton StandardOf(core::MessageAnswer answer) {
  switch (answer) {
    case core::MessageAnswer::kOk:
      return QMessageBox::Ok;
    case core::MessageAnswer::kYes:
      return QMessageBox::Yes;
    case core::MessageAnswer::kNo:
      return QMessageBox::No;
    case core::MessageAnswer::kRetry:
      return QMessageBox::Retry;
    case core::MessageAnswer::kCancel:
      return QMessageBox::Cancel;
    default:
      return QMessageBox::NoButton;
  }
}

std::vector<Button> ButtonsOf(const core::Message& message) {
  std::vector<Button> buttons;
  for (const core::MessageChoice& choice : message.choices) {
    buttons.push_back({choice.answer, StandardOf(choice.answer), choice.text});
  }
  if (!buttons.empty()) return buttons;
  const std::span<const Button> usual = ButtonsOf(message.buttons);
  return {usual.begin(), usual.end()};
}

}  // namespace

core::MessageAnswer MessageBox::Show(const core::Message& message) {
  while (QApplication::overrideCursor() != nullptr) QApplication::restoreOverrideCursor();
  if (script_) return script_(message);
  QWidget* window = QApplication::activeModalWidget();
  // What shows how far a job is goes away by itself, and would take the message along.
  while (qobject_cast<QProgressDialog*>(window) != nullptr) window = window->parentWidget();
  if (window == nullptr) window = QApplication::activeWindow();
  QMessageBox box(window == nullptr ? parent_.data() : window);
  box.setObjectName("MessageBox");
  SetHelpTopic(box, message.key);
  box.setIcon(IconOf(message.icon));
  ShowPicture(box, message.icon);
  box.setWindowTitle(ToQString(message.title));
  box.setTextFormat(Qt::PlainText);
  box.setText(ToQString(message.text));
  const std::vector<Button> buttons = ButtonsOf(message);
  const std::vector<QPushButton*> added = AddButtons(box, buttons, texts_);
  if (message.lastIsDefault) box.setDefaultButton(added.back());
  box.exec();
  for (std::size_t i = 0; i < buttons.size(); ++i) {
    if (box.clickedButton() == added[i]) return buttons[i].answer;
  }
  return buttons.back().answer;
}

void MessageBox::Beep() {
  ++beeps_;
  if (!script_) QApplication::beep();
}

}  // namespace varnlog::ui
