#pragma once

#include <QProgressDialog>

#include "core/TextLookup.h"
#include "report/ReportLayout.h"

namespace varnlog::report {

/// Shows how far a report is, with a button that stops it, once it takes longer than a second.
class ProgressWindow final : public ReportProgress {
 public:
  ProgressWindow(QWidget* parent, const core::TextLookup& texts);

  bool Counting(std::int64_t rowsDone, std::int64_t rows) override;
  bool Painting(int page, int pages) override;

 private:
  bool Show(const QString& text, double part);

  const core::TextLookup& texts_;
  QProgressDialog dialog_;
};

}  // namespace varnlog::report
