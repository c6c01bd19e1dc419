#pragma once

#include <string>
#include <vector>

namespace varnlog::report {

/// The text of a PDF file as pdftotext lays it out.
[[nodiscard]] std::string PdfText(const std::string& file);

/// The number behind `word` on each page, in the order of the pages.
[[nodiscard]] std::vector<int> FooterNumbers(const std::string& file, const std::string& word);

}  // namespace varnlog::report
