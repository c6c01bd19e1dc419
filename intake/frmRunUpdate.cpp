#include "intake/frmRunUpdate.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLocale>
#include <QPushButton>
#include <QShowEvent>
#include <QTimer>
#include <QVBoxLayout>

#include "intake/frmCancelUpdate.h"
#include "intake/frmUpdateNotices.h"
#include "ui/QtText.h"

namespace varnlog::intake {

using core::literals::operator""_key;
using ui::Caption;

namespace {

// Often enough that the button answers at once, seldom enough that a long run does not wait for the screen.
constexpr qint64 kMillisecondsBetweenEvents = 30;
constexpr int kProgressSteps = 10'000;

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
  result_ = RunUpdate(context_, *this);
  running_ = false;
  EndWait();
  done(result_.outcome == UpdateResult::Outcome::kDone ? QDialog::Accepted : QDialog::Rejected);
}

void frmRunUpdate::reject() {
  if (running_) {
    // Asked when the run has let go of the log.
    cancelWanted_ = true;
  } else {
    // Before the first record: nothing was begun, and activating the program must not begin it either.
    context_.globals.UpdateDeclinedGl = true;
    QDialog::reject();
  }
}

void frmRunUpdate::AskCancel() {
  EndWait();
  frmCancelUpdate dialog(parentWidget() != nullptr ? parentWidget() : this, context_.texts);
  context_.globals.UpdateDeclinedGl = dialog.exec() != QDialog::Accepted;
  cancelWanted_ = false;
}

void frmRunUpdate::SetRecordCount(std::int64_t records) {
  EndWait();
  prgBar_->setRange(0, records > 0 ? kProgressSteps : 0);
  records_ = records;
  // The first record is shown at once.
  sinceEvents_.invalidate();
}

void frmRunUpdate::Advance(std::int64_t recordsDone) {
  if (sinceEvents_.isValid() && !sinceEvents_.hasExpired(kMillisecondsBetweenEvents)) return;
  if (records_ > 0) prgBar_->setValue(static_cast<int>(recordsDone * kProgressSteps / records_));
  lblProgress_->setText(Caption(context_.texts, "RU_PROGRESS"_key,
                                {{"lngDone", NumberText(recordsDone)}, {"lngCount", NumberText(records_)}}));
  HandleEvents();
}

void frmRunUpdate::HandleEvents() {
  QApplication::processEvents();
  sinceEvents_.start();
}

void frmRunUpdate::Wait() {
  if (!waits_) QApplication::setOverrideCursor(Qt::WaitCursor);
  waits_ = true;
  if (!sinceEvents_.isValid() || sinceEvents_.hasExpired(kMillisecondsBetweenEvents)) HandleEvents();
}

/// A message box takes the hourglass away by itself.
void frmRunUpdate::EndWait() {
  if (waits_ && QApplication::overrideCursor() != nullptr) QApplication::restoreOverrideCursor();
  waits_ = false;
}

std::string frmRunUpdate::NumberText(std::int64_t number) const {
  return ui::FromQString(QLocale().toString(static_cast<qlonglong>(number)));
}

void frmRunUpdate::ShowNotices(const std::vector<std::string>& notices) {
  EndWait();
  frmUpdateNotices(this, context_.texts, user_, notices).exec();
}

core::MessageAnswer frmRunUpdate::Show(const core::Message& message) {
  EndWait();
  return user_.Show(message);
}

void frmRunUpdate::Beep() {
  user_.Beep();
}

}  // namespace varnlog::intake
