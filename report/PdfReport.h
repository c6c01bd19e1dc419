#pragma once

#include <memory>
#include <string>

#include "report/PdfFile.h"
#include "report/ReportErrors.h"
#include "report/ReportJob.h"
#include "report/ReportLayout.h"

namespace varnlog::report {

/// What drawing needs in a program without windows: fonts, and no display. One at a time, and not beside an
/// application object of a desktop program.
class DrawingWithoutDisplay {
 public:
  DrawingWithoutDisplay();
  ~DrawingWithoutDisplay();
  DrawingWithoutDisplay(const DrawingWithoutDisplay&) = delete;
  DrawingWithoutDisplay& operator=(const DrawingWithoutDisplay&) = delete;

 private:
  struct Application;
  std::unique_ptr<Application> application_;
};

/// Writes the report as a PDF file on the paper of the user's country; as SavePdf in all else.
[[nodiscard]] bool SaveReportAsPdf(const ReportJob& job, const PdfTarget& target, ReportProgress& progress);

}  // namespace varnlog::report
