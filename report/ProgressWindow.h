#pragma once

#include "report/ReportLayout.h"
#include "ui/WaitWindow.h"

namespace varnlog::report {

/// Shows how far a report is.
class ProgressWindow final : public ReportProgress {
 public:
  /// `painting` says what is being done with the pages, as "Seite $lngPage$ von $lngPages$ ...".
  ProgressWindow(QWidget* parent, const core::TextLookup& texts, core::TextKey painting)
      : texts_(texts), painting_(painting), window_(parent, texts, "frmReportProgress") {}

  bool Counting(std::int64_t rowsDone, std::int64_t rows) override;
  bool Painting(int page, int pages) override;

 private:
  const core::TextLookup& texts_;
  core::TextKey painting_;
  ui::WaitWindow window_;
};

}  // namespace varnlog::report
