#include "tools/make_databases/TextTable.h"

#include <algorithm>
#include <set>
#include <stdexcept>

#include "platform/CodePage.h"

namespace varnlog::tools {

namespace {

const std::vector<std::string> kHeading = {"key", "D", "GB", "E", "I", "F", "NL", "CYR"};

[[noreturn]] void Refuse(std::size_t line, const std::string& why) {
  throw std::runtime_error("line " + std::to_string(line) + ": " + why);
}

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  while (true) {
    const std::size_t end = std::min(text.find(separator), text.size());
    parts.emplace_back(text.substr(0, end));
    if (end == text.size()) return parts;
    text.remove_prefix(end + 1);
  }
}

bool IsKey(const std::string& text) {
  const auto allowed = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'; };
  return !text.empty() && std::all_of(text.begin(), text.end(), allowed);
}

TextLine ReadLine(const std::string& line, std::size_t number) {
  std::vector<std::string> columns = Split(line, '\t');
  if (columns.size() != kHeading.size())
    Refuse(number, std::to_string(columns.size()) + " columns instead of " + std::to_string(kHeading.size()));
  if (!IsKey(columns.front())) Refuse(number, "'" + columns.front() + "' is no key");
  const auto empty = std::find(columns.begin(), columns.end(), std::string());
  if (empty != columns.end())
    Refuse(number, columns.front() + " has no text in " +
                       kHeading[static_cast<std::size_t>(empty - columns.begin())]);
  return {columns.front(), {columns.begin() + 1, columns.end()}};
}

}  // namespace

TextTable ReadTextTable(std::string_view content) {
  if (!platform::IsUtf8(content)) throw std::runtime_error("the file is not UTF-8");
  std::vector<std::string> lines = Split(content, '\n');
  if (lines.back().empty()) lines.pop_back();
  if (lines.empty() || Split(lines.front(), '\t') != kHeading)
    Refuse(1, "the heading is not key, D, GB, ...");
  TextTable table{.languages = {kHeading.begin() + 1, kHeading.end()}, .lines = {}};
  std::set<std::string> keys;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    table.lines.push_back(ReadLine(lines[i], i + 1));
    if (!keys.insert(table.lines.back().key).second)
      Refuse(i + 1, table.lines.back().key + " is there already");
  }
  return table;
}

}  // namespace varnlog::tools
