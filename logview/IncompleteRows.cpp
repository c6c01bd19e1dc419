#include "logview/IncompleteRows.h"

#include <charconv>
#include <string>

#include "logview/Columns.h"
#include "logview/EditRules.h"

namespace varnlog::logview {

namespace {

bool MustBeFilled(const Column& column) {
  return !column.editFlag.empty() && !column.mayBeEmpty;
}

/// The open and empty ones of these columns as one number, and the patient's sex.
dao::IndexedColumn MissingValues() {
  dao::IndexedColumn missing;
  for (const Column& column : kColumns) {
    if (!MustBeFilled(column)) continue;
    missing.fields.emplace_back(column.field);
    missing.openFlags.emplace_back(column.editFlag);
  }
  missing.fields.emplace_back("tXraySSex");
  return missing;
}

/// The bits of columns that are never open for a man.
std::uint32_t NeverOpenForMen() {
  std::uint32_t bits = 0;
  std::uint32_t bit = 1;
  for (const Column& column : kColumns) {
    if (!MustBeFilled(column)) continue;
    if (column.exceptForMen) bits |= bit;
    bit <<= 1U;
  }
  return bits;
}

}  // namespace

IncompleteRows::IncompleteRows(dao::Database& log) {
  const dao::IndexedColumn columns[] = {MissingValues()};
  index_ = log.IndexValues("TXray", columns);
}

bool IncompleteRows::Read(std::int64_t rows) {
  return index_->Read(rows);
}

dao::IdSet IncompleteRows::Find() const {
  dao::ValueIndex::Marks marks(1);
  for (std::size_t i = 0; i < index_->ValueCount(0); ++i) {
    const std::string_view value = index_->Value(0, i);
    const std::size_t divider = value.find(dao::kValueDivider);
    std::uint32_t missing = 0;
    std::from_chars(value.data(), value.data() + divider, missing);
    if (value.substr(divider + 1) == "m") missing &= ~NeverOpenForMen();
    marks[0].push_back(missing == 0 ? 0 : 1);
  }
  return index_->RowsWith(marks, 1);
}

bool IsMissing(dao::Recordset& rows, int column) {
  const Column& asked = kColumns.at(static_cast<std::size_t>(column));
  return MustBeFilled(asked) && CellStateOf(rows, column) == CellState::kEdit &&
         rows.Fields(asked.field).Text().empty();
}

}  // namespace varnlog::logview
