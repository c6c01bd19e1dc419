#include "tests/legacy/Samples.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <iterator>
#include <memory>
#include <sstream>

#include "tests/Paths.h"
#include "tests/support/TestFolder.h"

namespace varnlog::legacy::samples {
namespace {

std::string Unpack(const std::filesystem::path& path) {
  const std::string command = "gzip -dc '" + path.string() + "'";
  const auto close = [](FILE* pipe) { pclose(pipe); };
  const std::unique_ptr<FILE, decltype(close)> pipe(popen(command.c_str(), "r"), close);
  std::string content;
  char block[1U << 16U];
  while (const std::size_t length = std::fread(block, 1, sizeof block, pipe.get())) {
    content.append(block, length);
  }
  return content;
}

std::string Escape(std::string_view text) {
  constexpr std::string_view kSpecial = "\t\n\r\\";
  std::string escaped;
  for (const char c : text) {
    const std::size_t special = kSpecial.find(c);
    escaped += special == std::string_view::npos ? std::string(1, c) : std::string{'\\', "tnr\\"[special]};
  }
  return escaped;
}

std::string Hex(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string hex = "0x";
  for (const char c : bytes) {
    hex += kDigits[static_cast<unsigned char>(c) >> 4U];
    hex += kDigits[static_cast<unsigned char>(c) & 15U];
  }
  return hex;
}

std::string Decimal(double value, bool isSingle) {
  char text[64];
  const auto end = isSingle ? std::to_chars(text, std::end(text), static_cast<float>(value))
                            : std::to_chars(text, std::end(text), value);
  std::string decimal(text, end.ptr);
  if (decimal.find_first_of(".e") == std::string::npos) decimal += ".0";
  return decimal;
}

std::string RenderRow(const JetRow& row, const JetTable& table) {
  std::string line;
  for (std::size_t i = 0; i < row.values.size(); ++i) {
    if (i != 0) line += '\t';
    line += Render(row.values[i], table.columns[i].type);
  }
  return line;
}

std::string Heading(const JetTable& table) {
  std::string line;
  for (const JetColumn& column : table.columns) line += (line.empty() ? "" : "\t") + column.name;
  return line;
}

}  // namespace

std::filesystem::path Folder() {
  return std::filesystem::path(VARNLOG_SOURCE_DIR) / "tests/data/jet";
}

std::string Read(const std::filesystem::path& path) {
  return path.extension() == ".gz" ? Unpack(path) : test::ReadFile(path);
}

std::string ReadOurs(const std::string& name) {
  return Read(Folder() / platform::ToPath(name));
}

std::string Render(const Value& value, ColumnType type) {
  if (std::holds_alternative<std::monostate>(value)) return "\\N";
  if (const auto* flag = std::get_if<bool>(&value)) return *flag ? "1" : "0";
  if (const auto* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
  if (const auto* number = std::get_if<double>(&value)) {
    return Decimal(*number, type == ColumnType::kSingle);
  }
  if (const auto* date = std::get_if<platform::DateTime>(&value)) {
    std::string iso = date->ToIso();
    iso[10] = 'T';
    return iso;
  }
  const auto& text = std::get<std::string>(value);
  return type == ColumnType::kOle || type == ColumnType::kBinary ? Hex(text) : Escape(text);
}

std::vector<std::string> RenderTables(const JetDatabase& database, FaultList& faults) {
  std::vector<std::string> lines;
  std::vector<std::string> names = database.TableNames();
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    const auto table = database.Table(name);
    if (!table) {
      faults.Add(table.Why());
      continue;
    }
    lines.push_back("# " + name);
    lines.push_back(Heading(*table));
    const auto firstRow = static_cast<std::ptrdiff_t>(lines.size());
    database.Read(
        *table,
        [&](const JetRow& row) {
          lines.push_back(RenderRow(row, *table));
          return true;
        },
        faults);
    std::sort(lines.begin() + firstRow, lines.end());
  }
  return lines;
}

std::vector<std::string> Expected(const std::string& content) {
  std::vector<std::vector<std::string>> tables;
  std::istringstream stream(content);
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with("# ")) tables.emplace_back();
    if (!tables.empty()) tables.back().push_back(line);
  }
  std::sort(tables.begin(), tables.end());
  std::vector<std::string> lines;
  for (auto& table : tables) {
    if (table.size() > 2) std::sort(table.begin() + 2, table.end());
    lines.insert(lines.end(), table.begin(), table.end());
  }
  return lines;
}

}  // namespace varnlog::legacy::samples
