#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "db/dao/rows/RowFields.h"
#include "db/dao/sqlite/HeldRows.h"
#include "db/dao/sqlite/Statement.h"

namespace varnlog::dao {

/// Binds the rows that a statement inserts, one after the other.
class RowBinding {
 public:
  /// The fields of `row` become the parameters from `first` on. The row stays where it is until the statement
  /// has run.
  void Bind(Statement& statement, std::size_t first, std::span<const CopyBuffer::Cell> row);

 private:
  // What a parameter holds: a text by its place, whatever stands there.
  struct Bound {
    CellKind kind = CellKind::kDeleted;  // never bound
    std::int64_t integer = 0;
    const char* text = nullptr;
    std::size_t length = 0;
    friend bool operator==(const Bound&, const Bound&) = default;
  };
  std::vector<Bound> bound_;
};

/// Rows of one table whose counters are known before they are written.
class HeldInserts final : public HeldRows {
 public:
  static constexpr std::size_t kMost = 16;

  /// `insert` is the statement up to its VALUES, `values` what stands in there for a row of `fields`.
  HeldInserts(Connection& file, const std::string& insert, const std::string& values);

  [[nodiscard]] bool IsFull() const { return count_ == kMost; }
  void Add(std::span<const CopyBuffer::Cell> row, std::int64_t id);

  [[nodiscard]] std::int64_t Count() const noexcept override { return static_cast<std::int64_t>(count_); }
  void Write() override;
  void Drop() noexcept override { count_ = 0; }

 private:
  Connection& file_;
  Statement all_;
  RowBinding allBound_;
  Statement single_;
  RowBinding singleBound_;
  std::array<std::vector<CopyBuffer::Cell>, kMost> rows_;  // their memory is used again
  std::size_t count_ = 0;
  std::int64_t lastId_ = 0;
};

}  // namespace varnlog::dao
