#include "statistics/StatisticsRows.h"

#include <array>
#include <charconv>

namespace varnlog::statistics {

using namespace core::literals;
using exports::Cell;

namespace {

Cell CellOf(const charts::Value& value) {
  if (!value.number) return {.text = value.text};
  std::array<char, 64> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), *value.number,
                                 std::chars_format::fixed, value.decimals);
  return {.text = {text.data(), end.ptr},
          .kind = value.decimals == 0 ? Cell::Kind::kNumber : Cell::Kind::kMeasured};
}

void AddRow(const charts::Page& page, const std::vector<charts::Value>& row, exports::RowWriter& writer,
            void (exports::RowWriter::*add)(const exports::Row&)) {
  for (std::size_t column = 1; column < row.size(); ++column) {
    const Cell value = CellOf(row[column]);
    if (value.text.empty()) continue;
    (writer.*add)({{.text = page.title}, CellOf(row.front()), {.text = page.table.headings[column]}, value});
  }
}

void ForEachRow(std::span<const charts::Page> pages, exports::RowWriter& writer,
                void (exports::RowWriter::*add)(const exports::Row&)) {
  for (const charts::Page& page : pages)
    for (const auto& row : page.table.rows) AddRow(page, row, writer, add);
}

}  // namespace

void WriteValues(std::span<const charts::Page> pages, const core::TextLookup& texts,
                 exports::RowWriter& writer) {
  writer.Begin({texts.GetText("ST_STATISTIC"_key), texts.GetText("ST_ROW"_key),
                texts.GetText("ST_COLUMN"_key), texts.GetText("ST_VALUE"_key)});
  if (writer.NeedsMeasure()) ForEachRow(pages, writer, &exports::RowWriter::Measure);
  ForEachRow(pages, writer, &exports::RowWriter::Add);
  writer.End();
}

void WriteTable(const charts::Table& table, exports::RowWriter& writer) {
  writer.Begin(table.headings);
  for (const auto& row : table.rows) {
    exports::Row cells;
    for (const charts::Value& value : row) cells.push_back(CellOf(value));
    writer.Add(cells);
  }
  writer.End();
}

}  // namespace varnlog::statistics
