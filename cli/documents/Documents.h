#pragma once

#include "cli/Command.h"

namespace varnlog::cli {

void ValidateExport(const Options& options);
void RunExportCommand(Session& session, const Options& options, Output& output);
void RunReportCommand(Session& session, const Options& options, Output& output);
void RunInspectionCommand(Session& session, const Options& options, Output& output);

}  // namespace varnlog::cli
