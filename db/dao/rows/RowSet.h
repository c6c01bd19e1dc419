#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace varnlog::dao {

class Statement;

enum class CellKind : std::uint8_t {
  kNull,
  kInteger,
  kReal,
  kText,
  kBytes,    // only what another program left there
  kDeleted,  // the row was gone when it was read
};

/// One value as it is stored.
struct CellView {
  CellKind kind = CellKind::kNull;
  std::int64_t integer = 0;
  double real = 0;
  std::string_view text;
  friend bool operator==(const CellView&, const CellView&) = default;
};

/// Rows copied out of the storage: all values in two pieces of memory, however many rows there are.
class RowSet {
 public:
  explicit RowSet(std::size_t columns) : columns_(columns) {}

  /// The statement's current row.
  void Append(const Statement& row);
  void AppendDeleted();
  void Reserve(std::size_t rows, std::size_t bytesPerRow);

  [[nodiscard]] std::size_t RowCount() const { return columns_ == 0 ? 0 : cells_.size() / columns_; }
  [[nodiscard]] bool IsDeleted(std::size_t row) const;
  /// The text lives as long as the row set is not appended to.
  [[nodiscard]] CellView At(std::size_t row, std::size_t column) const;

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

  std::size_t columns_;
  std::vector<Cell> cells_;
  std::string bytes_;
};

}  // namespace varnlog::dao
