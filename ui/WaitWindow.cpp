#include "ui/WaitWindow.h"

#include "ui/QtText.h"

namespace varnlog::ui {

using core::literals::operator""_key;

namespace {

constexpr int kMillisecondsUntilShown = 1'000;
constexpr int kSteps = 1'000;

}  // namespace

WaitWindow::WaitWindow(QWidget* parent, const core::TextLookup& texts, const char* name)
    : texts_(texts), dialog_(parent) {
  dialog_.setObjectName(QLatin1String(name));
  dialog_.setWindowTitle(Caption(texts, "GL_TITLE"_key));
  dialog_.setCancelButtonText(Caption(texts, "GL_CANCEL"_key));
  // Nothing else may touch the rows while they are being read.
  dialog_.setWindowModality(Qt::ApplicationModal);
  dialog_.setMinimumDuration(kMillisecondsUntilShown);
  dialog_.setAutoReset(false);
  dialog_.setAutoClose(false);
  // The escape key is a shortcut only where the dialog has become the active window.
  QObject::connect(&dialog_, &QDialog::rejected, &dialog_, &QProgressDialog::cancel);
  dialog_.setRange(0, kSteps);
  dialog_.setValue(0);
}

bool WaitWindow::Advance(core::TextKey label, std::int64_t done, std::int64_t all) {
  return Show(Caption(texts_, label, {{"lngDone", std::to_string(done)}, {"lngCount", std::to_string(all)}}),
              all > 0 ? static_cast<double>(done) / static_cast<double>(all) : 0);
}

bool WaitWindow::Show(const QString& text, double part) {
  dialog_.setLabelText(text);
  // The last step would end the dialog before the job.
  dialog_.setValue(static_cast<int>(part * (kSteps - 1)));
  return !dialog_.wasCanceled();
}

}  // namespace varnlog::ui
