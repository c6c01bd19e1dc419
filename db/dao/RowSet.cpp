#include "db/dao/RowSet.h"

#include <sqlite3.h>

#include "db/dao/Statement.h"

namespace varnlog::dao {

void RowSet::Append(const Statement& row) {
  for (int column = 0; column < static_cast<int>(columns_); ++column) {
    Cell cell{.integer = 0, .length = 0, .kind = CellKind::kNull};
    switch (row.ColumnType(column)) {
      case SQLITE_NULL:
        break;
      case SQLITE_INTEGER:
        cell.kind = CellKind::kInteger;
        cell.integer = row.Number(column);
        break;
      case SQLITE_FLOAT:
        cell.kind = CellKind::kReal;
        cell.real = row.Real(column);
        break;
      default: {
        const std::string_view text = row.Text(column);
        cell.kind = CellKind::kText;
        cell.offset = bytes_.size();
        cell.length = static_cast<std::uint32_t>(text.size());
        bytes_ += text;
      }
    }
    cells_.push_back(cell);
  }
}

void RowSet::AppendDeleted() {
  cells_.insert(cells_.end(), columns_, Cell{.integer = 0, .length = 0, .kind = CellKind::kDeleted});
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
