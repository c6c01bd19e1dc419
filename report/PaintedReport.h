#pragma once

#include <vector>

#include <QFont>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPainter>

#include "report/PrintChoices.h"
#include "report/QtTextMetrics.h"
#include "report/ReportJob.h"
#include "report/ReportLayout.h"

namespace varnlog::report {

/// The design's paper, or Letter where the user's country prints on it; landscape.
[[nodiscard]] QPageLayout DefaultPageLayout(const ReportDesign& design);

/// A report drawn with QPainter. Needs a QGuiApplication.
class PaintedReport {
 public:
  /// For paper of this layout. The job outlives the report. Throws NamedFormulaError, and PrintError when no
  /// font is installed.
  PaintedReport(const ReportJob& job, const QPageLayout& page);

  /// As ReportLayout's; before anything is drawn.
  [[nodiscard]] bool Paginate(ReportProgress& progress) { return layout_.Paginate(progress); }
  [[nodiscard]] int PageCount() const { return layout_.PageCount(); }

  /// Draws one page with the painter's origin at the corner inside the margins.
  void PaintPage(QPainter& painter, int page);

  /// Draws the pages of a range that the report has, on as many pages of the device. False when the progress
  /// stopped it. Throws PrintError.
  [[nodiscard]] bool Paint(QPagedPaintDevice& device, PageRange range, ReportProgress& progress);

 private:
  std::vector<QFont> fonts_;
  QtTextMetrics metrics_;
  ReportLayout layout_;
};

}  // namespace varnlog::report
