#include "tests/cli/PdfText.h"

#include <algorithm>
#include <sstream>

namespace varnlog::cli {

std::vector<std::string> PdfPages(const std::filesystem::path& pdf, const Installation& shell) {
  std::istringstream text(shell.Shell("pdftotext -layout -enc UTF-8 '" + pdf.string() + "' -").out);
  std::vector<std::string> pages;
  for (std::string page; std::getline(text, page, '\f');) pages.push_back(page);
  return pages;
}

std::vector<ReportedRow> ReportedRows(const std::filesystem::path& pdf, const Installation& shell) {
  std::vector<ReportedRow> rows;
  for (const std::string& page : PdfPages(pdf, shell)) {
    std::istringstream lines(page);
    bool inRows = false;
    for (std::string line; std::getline(lines, line);) {
      const std::string text = SingleBlanks(line);
      if (text.starts_with("Gedruckt:") || text.starts_with("Anzahl der Aufnahmen:")) break;
      if (text.starts_with(std::to_string(rows.size() + 1) + " ")) {
        rows.emplace_back();
        inRows = true;
      }
      if (!inRows || text.empty()) continue;
      rows.back().text += (rows.back().lines++ == 0 ? "" : " ") + text;
    }
  }
  return rows;
}

std::string SingleBlanks(const std::string& text) {
  std::istringstream words(text);
  std::string result;
  for (std::string word; words >> word;) result += (result.empty() ? "" : " ") + word;
  return result;
}

std::string Letters(std::string text) {
  std::erase_if(text, [](char c) { return c == ' ' || c == '\r' || c == '\n'; });
  std::ranges::sort(text);
  return text;
}

}  // namespace varnlog::cli
