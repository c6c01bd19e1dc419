#pragma once

#include "cli/Command.h"

namespace varnlog::cli {

// The commands of the program of documents, as both programs know them: their place in the help text, their
// options. That program adds what they do.

void AddExportOptions(CLI::App& command, Options& options);
void AddReportOptions(CLI::App& command, Options& options);
void AddInspectionOptions(CLI::App& command, Options& options);

inline constexpr Command kExportCommand{"export", "write the log view as a workbook, CSV or JSON file",
                                        AddExportOptions, nullptr, nullptr};
inline constexpr Command kReportCommand{"report", "write the printed log as a PDF file", AddReportOptions,
                                        nullptr, nullptr};
inline constexpr Command kInspectionCommand{"inspection",
                                            "make a folder with everything about a period, for an inspector",
                                            AddInspectionOptions, nullptr, nullptr};

}  // namespace varnlog::cli
