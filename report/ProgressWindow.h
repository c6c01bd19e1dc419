#pragma once

#include <QProgressDialog>

#include "core/TextLookup.h"
#include "report/ReportLayout.h"

namespace varnlog::report {

/// Shows how far a report is, with a button that stops it, once it takes longer than a second. It must be
/// gone before a message is shown, or it comes up over that.
class ProgressWindow final : public ReportProgress {
 public:
  /// `painting` says what is being done with the pages, as "Seite $lngPage$ von $lngPages$ ...".
  ProgressWindow(QWidget* parent, const core::TextLookup& texts, core::TextKey painting);

  bool Counting(std::int64_t rowsDone, std::int64_t rows) override;
  bool Painting(int page, int pages) override;

 private:
  bool Show(const QString& text, double part);

  const core::TextLookup& texts_;
  core::TextKey painting_;
  QProgressDialog dialog_;
};

}  // namespace varnlog::report
