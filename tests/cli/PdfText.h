#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/cli/Installation.h"

namespace varnlog::cli {

/// The text of each page as `pdftotext -layout` reads it.
[[nodiscard]] std::vector<std::string> PdfPages(const std::filesystem::path& pdf, const Installation& shell);

/// One line of the report: the text of its columns with single blanks, and on how many lines of paper it
/// stands.
struct ReportedRow {
  std::string text;
  int lines = 0;
};

/// The rows between headings and footers, found by their running numbers from 1 on.
[[nodiscard]] std::vector<ReportedRow> ReportedRows(const std::filesystem::path& pdf,
                                                    const Installation& shell);

/// Blanks and line breaks as one blank each, none at the ends.
[[nodiscard]] std::string SingleBlanks(const std::string& text);
/// The characters of a text but blanks, sorted: what a wrapped row keeps.
[[nodiscard]] std::string Letters(std::string text);

}  // namespace varnlog::cli
