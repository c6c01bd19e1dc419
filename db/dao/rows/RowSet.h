#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "db/dao/rows/RowBlock.h"

namespace varnlog::dao {

/// Rows copied out of the storage: all values in two pieces of memory, however many rows there are.
class RowSet final : public RowBlock {
 public:
  explicit RowSet(std::size_t columns) : columns_(columns) {}

  /// One value a column; `valueAt(column)` is asked for them in their order.
  template <typename ValueAt>
  void Append(const ValueAt& valueAt) {
    const std::size_t first = cells_.size();
    cells_.resize(first + columns_);
    for (std::size_t column = 0; column < columns_; ++column) Set(cells_[first + column], valueAt(column));
  }
  void AppendDeleted();
  void Reserve(std::size_t rows, std::size_t bytesPerRow);

  [[nodiscard]] std::size_t RowCount() const override { return columns_ == 0 ? 0 : cells_.size() / columns_; }
  /// A text lives as long as the row set is not appended to.
  [[nodiscard]] CellView At(std::size_t row, std::size_t column) const override;

 private:
  struct Cell {
    union {
      std::int64_t integer = 0;
      double real;
      std::size_t offset;
    };
    std::uint32_t length = 0;
    CellKind kind = CellKind::kNull;
  };

  void Set(Cell& cell, const CellView& value) {
    cell.kind = value.kind;
    if (value.kind == CellKind::kInteger) {
      cell.integer = value.integer;
    } else if (value.kind == CellKind::kReal) {
      cell.real = value.real;
    } else if (value.kind == CellKind::kText) {
      cell.offset = bytes_.size();
      cell.length = static_cast<std::uint32_t>(value.text.size());
      bytes_.append(value.text);
    }
  }

  std::size_t columns_;
  std::vector<Cell> cells_;
  std::string bytes_;
};

}  // namespace varnlog::dao
