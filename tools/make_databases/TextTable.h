#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace varnlog::tools {

/// One line of the table of texts: a key and its text in each language.
struct TextLine {
  std::string key;
  std::vector<std::string> texts;  // as many as there are languages
};

struct TextTable {
  std::vector<std::string> languages;
  std::vector<TextLine> lines;
};

/// Reads tab-separated UTF-8 whose first line is "key" and the languages. Throws std::runtime_error, naming
/// the line, for a wrong heading, a wrong number of columns, an empty text, a key that is none or occurs
/// twice.
[[nodiscard]] TextTable ReadTextTable(std::string_view content);

}  // namespace varnlog::tools
