#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "db/dao/Field.h"

namespace varnlog::dao {

/// The rows of one table when a database is converted: written and read exactly as they are, which record
/// sets do not do. The counter is written like any other field, lengths are not checked, and the date of day
/// zero is a date, not NULL. A row is one value a field, in the order of TableDef::Fields().
///
/// Use within a transaction of the workspace. Throws EngineError like a record set.
class BulkRows {
 public:
  virtual ~BulkRows() = default;
  BulkRows() = default;
  BulkRows(const BulkRows&) = delete;
  BulkRows& operator=(const BulkRows&) = delete;

  /// Takes the table's indexes away until RestoreIndexes(): making them of all rows at once costs much less
  /// than keeping them up to date row by row.
  virtual void SuspendIndexes() = 0;
  /// `progress` is asked now and then whether to go on; kCancelled when it says no.
  virtual void RestoreIndexes(const std::function<bool()>& progress) = 0;

  /// kDuplicateKey when there is a row of that key, at the latest from the next other function.
  virtual void Insert(std::span<const Value> row) = 0;

  /// Compares the row of that counter value with `row`, value by value and type by type. The number of the
  /// first field that differs; kEqual when none does, kMissing when there is no such row. Rows that are asked
  /// for in the order of their counter cost least. From the first call on others cannot change the table.
  static constexpr int kEqual = -1;
  static constexpr int kMissing = -2;
  [[nodiscard]] virtual int FindDifference(std::int64_t id, std::span<const Value> row) = 0;

  /// Rows added from now on get ids above `id` and above all that are there.
  virtual void SetLastId(std::int64_t id) = 0;
};

}  // namespace varnlog::dao
