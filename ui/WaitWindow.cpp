#include "ui/WaitWindow.h"

#include "ui/QtText.h"

namespace varnlog::ui {

using core::literals::operator""_key;

namespace {

constexpr int kMillisecondsUntilShown = 1'000;

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
}

bool WaitWindow::Advance(core::TextKey label, std::int64_t done, std::int64_t all) {
  dialog_.setLabelText(
      Caption(texts_, label, {{"lngDone", std::to_string(done)}, {"lngCount", std::to_string(all)}}));
  dialog_.setMaximum(static_cast<int>(all) + 1);
  dialog_.setValue(static_cast<int>(done));
  return !dialog_.wasCanceled();
}

}  // namespace varnlog::ui
