#include "report/ProgressWindow.h"

#include "ui/QtText.h"

namespace varnlog::report {

using core::literals::operator""_key;

namespace {

constexpr double kCountingShare = 0.2;  // of the time that a whole report takes

double Part(std::int64_t done, std::int64_t all) {
  return all > 0 ? static_cast<double>(done) / static_cast<double>(all) : 0;
}

}  // namespace

bool ProgressWindow::Counting(std::int64_t rowsDone, std::int64_t rows) {
  return window_.Show(
      ui::Caption(texts_, "DRS_PROGRESS"_key,
                  {{"lngDone", std::to_string(rowsDone)}, {"lngCount", std::to_string(rows)}}),
      kCountingShare * Part(rowsDone, rows));
}

bool ProgressWindow::Painting(int page, int pages) {
  return window_.Show(ui::Caption(texts_, painting_,
                                  {{"lngPage", std::to_string(page)}, {"lngPages", std::to_string(pages)}}),
                      kCountingShare + (1 - kCountingShare) * Part(page, pages));
}

}  // namespace varnlog::report
