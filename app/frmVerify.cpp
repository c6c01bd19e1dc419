#include "app/frmVerify.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QLabel>
#include <QVBoxLayout>

#include "core/EngineMessages.h"
#include "start/VerifyText.h"
#include "ui/QtText.h"

namespace varnlog::app {

using core::literals::operator""_key;
using ui::Caption;

namespace {

constexpr qint64 kMillisecondsBetweenEvents = 30;
constexpr int kCharacters = 84;
constexpr int kLines = 14;

}  // namespace

frmVerify::frmVerify(QWidget* parent, dao::Database& log, const core::TextLookup& texts,
                     std::function<void(bool isSound)> onDone)
    : QDialog(parent),
      log_(log),
      texts_(texts),
      onDone_(std::move(onDone)),
      txtAnchor_(new QLineEdit),
      prgBar_(new QProgressBar),
      txtResult_(new QPlainTextEdit),
      cmdVerify_(new QPushButton) {
  setObjectName("frmVerify");
  setWindowTitle(Caption(texts, "VF_CAPTION"_key));
  txtAnchor_->setObjectName("txtAnchor");
  txtAnchor_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  auto* label = new QLabel(Caption(texts, "VF_ANCHOR"_key));
  label->setBuddy(txtAnchor_);
  label->setWordWrap(true);
  prgBar_->setObjectName("prgBar");
  prgBar_->setAccessibleName(windowTitle());
  // Its place stays, so that nothing jumps.
  QSizePolicy policy = prgBar_->sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  prgBar_->setSizePolicy(policy);
  txtResult_->setObjectName("txtResult");
  txtResult_->setReadOnly(true);
  // Tab leaves it, and a reader hears what it is.
  txtResult_->setTabChangesFocus(true);
  txtResult_->setAccessibleName(Caption(texts, "VF_RESULT"_key));
  txtResult_->setMinimumSize(fontMetrics().averageCharWidth() * kCharacters, fontMetrics().height() * kLines);

  auto* buttons = new QDialogButtonBox;
  cmdVerify_->setObjectName("cmdVerify");
  cmdVerify_->setDefault(true);
  buttons->addButton(cmdVerify_, QDialogButtonBox::ActionRole);
  buttons->addButton(Caption(texts, "GL_CLOSE"_key), QDialogButtonBox::RejectRole)->setObjectName("cmdClose");
  connect(cmdVerify_, &QPushButton::clicked, this, &frmVerify::Start);
  connect(buttons, &QDialogButtonBox::rejected, this, &frmVerify::reject);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(label);
  layout->addWidget(txtAnchor_);
  layout->addWidget(prgBar_);
  layout->addWidget(txtResult_, 1);
  layout->addWidget(buttons);
  SetRunning(false);
  txtAnchor_->setFocus();
}

void frmVerify::reject() {
  cancelled_ = true;
  if (!running_) QDialog::reject();
}

void frmVerify::SetRunning(bool running) {
  running_ = running;
  txtAnchor_->setEnabled(!running);
  cmdVerify_->setText(Caption(texts_, running ? "GL_CANCEL"_key : "VF_VERIFY"_key));
  prgBar_->setRange(0, 1);
  prgBar_->setValue(0);
  prgBar_->setVisible(running);
}

void frmVerify::Start() {
  if (running_) {
    cancelled_ = true;
    return;
  }
  cancelled_ = false;
  SetRunning(true);
  txtResult_->clear();
  sinceEvents_.start();
  QApplication::processEvents();
  Run();
  SetRunning(false);
  txtResult_->setFocus();
}

void frmVerify::Run() {
  const std::string text = ui::FromQString(txtAnchor_->text().simplified());
  const auto anchor = text.empty() ? std::nullopt : seals::ReadAnchor(text);
  if (!text.empty() && !anchor)
    return txtResult_->setPlainText(Caption(texts_, "VC_ERR_ANCHOR"_key, {{"strAnchor", text}}));
  try {
    const auto result = seals::Verify(
        log_, anchor, [this](std::int64_t done, std::int64_t all) { return ShowProgress(done, all); });
    txtResult_->setPlainText(ui::ToQString(start::VerifyText(result, anchor, texts_)));
    if (!result.isCancelled) onDone_(result.IsSound());
  } catch (const dao::EngineError& error) {
    txtResult_->setPlainText(ui::ToQString(core::EngineErrorText(texts_, error)));
  }
}

bool frmVerify::ShowProgress(std::int64_t done, std::int64_t all) {
  if (!sinceEvents_.hasExpired(kMillisecondsBetweenEvents)) return !cancelled_;
  prgBar_->setRange(0, static_cast<int>(all));
  prgBar_->setValue(static_cast<int>(done));
  QApplication::processEvents();
  sinceEvents_.restart();
  return !cancelled_;
}

}  // namespace varnlog::app
