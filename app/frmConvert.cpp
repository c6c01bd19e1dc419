#include "app/frmConvert.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/QtText.h"

namespace varnlog::app {

using core::literals::operator""_key;
using legacy::ConversionStep;
using ui::Caption;

namespace {

constexpr qint64 kMoment = 250;                    // milliseconds
constexpr qint64 kMillisecondsBetweenEvents = 30;  // the button answers at once, the work hardly waits

core::TextKey TextOf(ConversionStep step) {
  switch (step) {
    case ConversionStep::kTakingOver:
      return "CV_PROGRESS"_key;
    case ConversionStep::kComparing:
      return "CV_COMPARING"_key;
    case ConversionStep::kReading:
      break;
  }
  return "CV_READING"_key;
}

}  // namespace

frmConvert::frmConvert(QWidget* parent, const core::TextLookup& texts, core::UserDialog& user)
    : QDialog(parent), texts_(texts), user_(user), label_(new QLabel), prgBar_(new QProgressBar) {
  setObjectName("frmConvert");
  label_->setTextFormat(Qt::PlainText);
  setWindowTitle(Caption(texts, "CV_CAPTION"_key));
  setWindowModality(Qt::ApplicationModal);
  prgBar_->setObjectName("prgBar");
  prgBar_->setAccessibleName(ui::PlainCaption(texts, "CV_CAPTION"_key));
  auto* buttons = new QDialogButtonBox;
  buttons->addButton(Caption(texts, "GL_CANCEL"_key), QDialogButtonBox::RejectRole)
      ->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::rejected, this, &frmConvert::reject);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(label_);
  layout->addWidget(prgBar_);
  layout->addSpacing(8);
  layout->addWidget(buttons);
  // Of the window itself it would take the place of what the texts need.
  prgBar_->setMinimumWidth(fontMetrics().averageCharWidth() * 58);
  sinceBegin_.start();
  sinceEvents_.start();
}

void frmConvert::Begin(ConversionStep step, std::int64_t exposures) {
  step_ = step;
  exposures_ = exposures;
  prgBar_->setRange(0, static_cast<int>(exposures));
  ShowProgress(0);
}

bool frmConvert::Advance(std::int64_t exposuresDone) {
  // Until this window holds them back, no event may reach the main window's commands.
  if (!isVisible() && sinceBegin_.hasExpired(kMoment)) show();
  if (!isVisible() || !sinceEvents_.hasExpired(kMillisecondsBetweenEvents)) return !cancelled_;
  ShowProgress(exposuresDone);
  QApplication::processEvents();
  sinceEvents_.restart();
  return !cancelled_;
}

void frmConvert::ShowProgress(std::int64_t exposuresDone) {
  prgBar_->setValue(static_cast<int>(exposuresDone));
  label_->setText(
      ui::Caption(texts_, TextOf(step_),
                  {{"lngDone", std::to_string(exposuresDone)}, {"lngCount", std::to_string(exposures_)}}));
}

core::MessageAnswer frmConvert::Show(const core::Message& message) {
  hide();
  const core::MessageAnswer answer = user_.Show(message);
  sinceBegin_.restart();
  return answer;
}

void frmConvert::Beep() {
  user_.Beep();
}

}  // namespace varnlog::app
