#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "db/dao/Field.h"
#include "db/dao/sqlite/Schema.h"
#include "db/dao/sqlite/Statement.h"

namespace varnlog::dao {

class Connection;

/// The rows of one table when a database is converted: written and read exactly as they are, which record
/// sets do not do. The counter is written like any other field, lengths are not checked, and the date of day
/// zero is a date, not NULL. A row is one value a field, in the order of TableDef::Fields().
///
/// Use within a transaction of the workspace. Throws EngineError like a record set.
class BulkRows {
 public:
  BulkRows(std::shared_ptr<Connection> connection, std::string_view table);

  /// Takes the table's indexes away until RestoreIndexes(): making them of all rows at once costs much less
  /// than keeping them up to date row by row.
  void SuspendIndexes();
  /// `progress` is asked now and then whether to go on; kCancelled when it says no.
  void RestoreIndexes(const std::function<bool()>& progress);

  /// kDuplicateKey when there is a row of that key.
  void Insert(std::span<const Value> row);

  /// Compares the row of that counter value with `row`, value by value and type by type. The number of the
  /// first field that differs; kEqual when none does, kMissing when there is no such row. Rows that are asked
  /// for in the order of their counter cost least. From the first call on others cannot change the file.
  static constexpr int kEqual = -1;
  static constexpr int kMissing = -2;
  [[nodiscard]] int FindDifference(std::int64_t id, std::span<const Value> row);

  /// Rows added from now on get ids above `id` and above all that are there.
  void SetLastId(std::int64_t id);

 private:
  [[nodiscard]] bool GoTo(std::int64_t id);
  [[nodiscard]] bool IsAt(std::int64_t id) const;

  std::shared_ptr<Connection> connection_;
  std::shared_ptr<const TableSchema> table_;
  std::vector<std::array<char, 19>> dates_;  // of the row that is being inserted
  std::vector<std::string> suspended_;       // how the indexes were declared
  Statement insert_;
  Statement find_;  // its current row is the one compared last
  bool isFinding_ = false;
};

}  // namespace varnlog::dao
