#include "intake/frmRunUpdate.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLocale>
#include <QPushButton>
#include <QShowEvent>
#include <QTimer>
#include <QVBoxLayout>

#include "intake/frmCancelUpdate.h"
#include "ui/QtText.h"

namespace varnlog::intake {

using core::literals::operator""_key;
using ui::Caption;

namespace {

// Often enough that the button answers at once, seldom enough that a long run does not wait for the screen.
constexpr qint64 kMillisecondsBetweenEvents = 30;
constexpr int kProgressSteps = 10'000;

QString ProgressText(const core::TextLookup& texts, std::int64_t done, std::int64_t count) {
  const auto number = [](std::int64_t value) {
    return ui::FromQString(QLocale().toString(static_cast<qlonglong>(value)));
  };
  return Caption(texts, "RU_PROGRESS"_key, {{"lngDone", number(done)}, {"lngCount", number(count)}});
}

}  // namespace

frmRunUpdate::frmRunUpdate(QWidget* parent, const UpdateContext& context, core::UserDialog& user)
    : QDialog(parent), context_(context), user_(user), prgBar_(new QProgressBar), lblProgress_(new QLabel) {
  setObjectName("frmRunUpdate");
  setWindowTitle(Caption(context.texts, "RU_CAPTION"_key));
  auto* label = new QLabel(Caption(context.texts, "RU_TEXT"_key));
  prgBar_->setObjectName("prgBar");
  prgBar_->setAccessibleName(ui::PlainCaption(context.texts, "RU_CAPTION"_key));
  prgBar_->setRange(0, 0);
  lblProgress_->setObjectName("lblProgress");
  auto* buttons = new QDialogButtonBox;
  buttons->addButton(Caption(context.texts, "GL_CANCEL"_key), QDialogButtonBox::RejectRole)
      ->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::rejected, this, &frmRunUpdate::reject);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(label);
  layout->addWidget(prgBar_);
  layout->addWidget(lblProgress_);
  layout->addSpacing(8);
  layout->addWidget(buttons);
  // Of the window itself it would take the place of what the texts need.
  prgBar_->setMinimumWidth(fontMetrics().averageCharWidth() * 58);
}

void frmRunUpdate::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (started_) return;
  started_ = true;
  // The window must be on the screen before the run takes the thread.
  QTimer::singleShot(0, this, &frmRunUpdate::Run);
}

void frmRunUpdate::Run() {
  running_ = true;
  sinceEvents_.start();
  result_ = RunUpdate(context_, *this);
  running_ = false;
  done(result_.outcome == UpdateResult::Outcome::kDone ? QDialog::Accepted : QDialog::Rejected);
}

void frmRunUpdate::reject() {
  if (running_) {
    AskCancel();
  } else {
    // Before the first record: nothing was begun, and activating the program must not begin it either.
    context_.globals.UpdateDeclinedGl = true;
    QDialog::reject();
  }
}

void frmRunUpdate::AskCancel() {
  // Events run while the question stands; a second click must not ask again.
  if (cancelAsked_) return;
  cancelAsked_ = true;
  frmCancelUpdate dialog(parentWidget() != nullptr ? parentWidget() : this, context_.texts);
  context_.globals.UpdateDeclinedGl = dialog.exec() != QDialog::Accepted;
  cancelAsked_ = false;
}

void frmRunUpdate::SetRecordCount(std::int64_t records) {
  prgBar_->setRange(0, records > 0 ? kProgressSteps : 0);
  records_ = records;
}

void frmRunUpdate::Advance(std::int64_t recordsDone) {
  if (!sinceEvents_.hasExpired(kMillisecondsBetweenEvents)) return;
  if (records_ > 0) prgBar_->setValue(static_cast<int>(recordsDone * kProgressSteps / records_));
  lblProgress_->setText(ProgressText(context_.texts, recordsDone, records_));
  QApplication::processEvents();
  sinceEvents_.restart();
}

core::MessageAnswer frmRunUpdate::Show(const core::Message& message) {
  return user_.Show(message);
}

void frmRunUpdate::Beep() {
  user_.Beep();
}

}  // namespace varnlog::intake
