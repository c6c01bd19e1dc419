#include "db/dao/rows/RowSet.h"

#include <new>

#include <sqlite3.h>

#include "db/dao/sqlite/Statement.h"

namespace varnlog::dao {

void RowSet::Append(const Statement& row) {
  const std::size_t first = cells_.size();
  cells_.resize(first + columns_);
  for (std::size_t column = 0; column < columns_; ++column) {
    Cell& cell = cells_[first + column];
    sqlite3_value* const value = sqlite3_column_value(row.Handle(), static_cast<int>(column));
    switch (sqlite3_value_type(value)) {
      case SQLITE_NULL:
        cell.kind = CellKind::kNull;
        break;
      case SQLITE_INTEGER:
        cell.kind = CellKind::kInteger;
        cell.integer = sqlite3_value_int64(value);
        break;
      case SQLITE_FLOAT:
        cell.kind = CellKind::kReal;
        cell.real = sqlite3_value_double(value);
        break;
      default: {
        const auto* const text = reinterpret_cast<const char*>(sqlite3_value_text(value));
        if (text == nullptr) throw std::bad_alloc();
        cell.kind = CellKind::kText;
        cell.offset = bytes_.size();
        cell.length = static_cast<std::uint32_t>(sqlite3_value_bytes(value));
        bytes_.append(text, cell.length);
      }
    }
  }
}

void RowSet::Reserve(std::size_t rows, std::size_t bytesPerRow) {
  cells_.reserve(rows * columns_);
  bytes_.reserve(rows * bytesPerRow);
}

void RowSet::AppendDeleted() {
  Cell deleted;
  deleted.kind = CellKind::kDeleted;
  cells_.insert(cells_.end(), columns_, deleted);
}

bool RowSet::IsDeleted(std::size_t row) const {
  return cells_[row * columns_].kind == CellKind::kDeleted;
}

CellView RowSet::At(std::size_t row, std::size_t column) const {
  const Cell& cell = cells_[row * columns_ + column];
  CellView view{.kind = cell.kind, .integer = 0, .real = 0, .text = {}};
  if (cell.kind == CellKind::kInteger) view.integer = cell.integer;
  if (cell.kind == CellKind::kReal) view.real = cell.real;
  if (cell.kind == CellKind::kText) view.text = std::string_view(bytes_).substr(cell.offset, cell.length);
  return view;
}

}  // namespace varnlog::dao
