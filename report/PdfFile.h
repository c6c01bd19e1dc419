#pragma once

#include <string>

#include <QPageLayout>

#include "report/ReportErrors.h"
#include "report/ReportJob.h"
#include "report/ReportLayout.h"

namespace varnlog::report {

/// Writes the report as a PDF file by way of a temporary file beside it: the old file or a whole new one,
/// never a part. False, with nothing changed, when the progress stopped it. Throws SaveError,
/// NamedFormulaError, PrintError and dao::EngineError.
[[nodiscard]] bool SavePdf(const ReportJob& job, const QPageLayout& page, const std::string& path,
                           ReportProgress& progress);

}  // namespace varnlog::report
