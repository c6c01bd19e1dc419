#include "db/dao/rows/RowSet.h"

namespace varnlog::dao {

void RowSet::Reserve(std::size_t rows, std::size_t bytesPerRow) {
  cells_.reserve(rows * columns_);
  bytes_.reserve(rows * bytesPerRow);
}

void RowSet::AppendDeleted() {
  Cell deleted;
  deleted.kind = CellKind::kDeleted;
  cells_.insert(cells_.end(), columns_, deleted);
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
