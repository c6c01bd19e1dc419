#pragma once

#include <string>

#include <QPageLayout>

#include "report/ReportErrors.h"
#include "report/ReportJob.h"
#include "report/ReportLayout.h"

namespace varnlog::report {

/// Where a report goes, and whose it is.
struct PdfTarget {
  std::string file;
  /// Who may read this log may read the report, nobody else. "" for a file like the one that is replaced.
  std::string log = {};
  /// The code of the language that it is in.
  std::string language = {};
};

/// Writes the report as a PDF file by way of a temporary file beside it: the old file or a whole new one,
/// never a part. False, with nothing changed, when the progress stopped it. Throws SaveError,
/// NamedFormulaError, PrintError and dao::EngineError.
[[nodiscard]] bool SavePdf(const ReportJob& job, const QPageLayout& page, const PdfTarget& target,
                           ReportProgress& progress);

}  // namespace varnlog::report
