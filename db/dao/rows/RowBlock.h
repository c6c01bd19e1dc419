#pragma once

#include <cstddef>
#include <memory>

#include "db/dao/CellView.h"

namespace varnlog::dao {

/// Rows that were read together and do not change any more.
class RowBlock {
 public:
  virtual ~RowBlock() = default;

  [[nodiscard]] virtual std::size_t RowCount() const = 0;
  /// kDeleted in every column of a row that was gone. The text lives as long as the block.
  [[nodiscard]] virtual CellView At(std::size_t row, std::size_t column) const = 0;
  [[nodiscard]] bool IsDeleted(std::size_t row) const { return At(row, 0).kind == CellKind::kDeleted; }

 protected:
  RowBlock() = default;
  RowBlock(const RowBlock&) = default;
  RowBlock& operator=(const RowBlock&) = default;
};

/// One row, which keeps its block; or none.
struct RowView {
  std::shared_ptr<const RowBlock> block;
  std::size_t row = 0;

  explicit operator bool() const { return block != nullptr; }
  [[nodiscard]] CellView At(std::size_t column) const { return block->At(row, column); }
  [[nodiscard]] bool IsDeleted() const { return block->IsDeleted(row); }
};

}  // namespace varnlog::dao
