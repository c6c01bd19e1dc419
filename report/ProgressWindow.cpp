#include "report/ProgressWindow.h"

#include "ui/QtText.h"

namespace varnlog::report {

using core::literals::operator""_key;

namespace {

constexpr int kSteps = 1'000;
constexpr double kCountingShare = 0.2;  // of the time that a whole report takes
constexpr int kMillisecondsUntilShown = 1'000;

double Part(std::int64_t done, std::int64_t all) {
  return all > 0 ? static_cast<double>(done) / static_cast<double>(all) : 0;
}

}  // namespace

ProgressWindow::ProgressWindow(QWidget* parent, const core::TextLookup& texts, core::TextKey painting)
    : texts_(texts), painting_(painting), dialog_(parent) {
  dialog_.setObjectName("frmReportProgress");
  dialog_.setWindowTitle(ui::Caption(texts, "GL_TITLE"_key));
  dialog_.setCancelButtonText(ui::Caption(texts, "GL_CANCEL"_key));
  // Nothing else may touch the rows while they are being read.
  dialog_.setWindowModality(Qt::ApplicationModal);
  dialog_.setMinimumDuration(kMillisecondsUntilShown);
  dialog_.setAutoReset(false);
  dialog_.setAutoClose(false);
  dialog_.setRange(0, kSteps);
  dialog_.setValue(0);
}

bool ProgressWindow::Counting(std::int64_t rowsDone, std::int64_t rows) {
  return Show(ui::Caption(texts_, "DRS_PROGRESS"_key,
                          {{"lngDone", std::to_string(rowsDone)}, {"lngCount", std::to_string(rows)}}),
              kCountingShare * Part(rowsDone, rows));
}

bool ProgressWindow::Painting(int page, int pages) {
  return Show(ui::Caption(texts_, painting_,
                          {{"lngPage", std::to_string(page)}, {"lngPages", std::to_string(pages)}}),
              kCountingShare + (1 - kCountingShare) * Part(page, pages));
}

bool ProgressWindow::Show(const QString& text, double part) {
  dialog_.setLabelText(text);
  dialog_.setValue(static_cast<int>(part * (kSteps - 1)));
  return !dialog_.wasCanceled();
}

}  // namespace varnlog::report
