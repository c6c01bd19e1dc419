#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/Schema.h"

namespace varnlog::dao {

/// Keeps the different combinations of values that some fields of a table have, so that a SELECT DISTINCT
/// over those fields reads a few thousand of them instead of a million rows. What such a statement gives
/// depends on the combinations alone, so it runs unchanged on a table of that name and those fields in a
/// database in memory.
class DistinctRows {
 public:
  /// A further column of the table in memory, in the storage's SQL: rows with the same number are equal in
  /// all fields, and stand next to each other. A statement that gives all the fields can leave all but the
  /// first of them out, which is DISTINCT without comparing.
  static constexpr const char* kGroupColumn = "\"group of equals\"";

  /// The database in memory to run a statement on that names no fields but `fields`, its rows in the order of
  /// the fields as given. It is filled when it is asked for the first time and again when the file has
  /// changed; it stays the same one, so statements prepared on it can be kept.
  ///
  /// Nothing when the statement has to run on the table itself: within a transaction, whose changes may yet
  /// be undone, when there are too many combinations, when a field holds numbers, and when too many
  /// sets of fields are kept already.
  [[nodiscard]] std::shared_ptr<Connection> Find(Connection& source, const TableSchema& table,
                                                 const std::vector<std::string>& fields);

 private:
  struct Kept {
    std::string key;
    RowStamp stamp;
    bool current = false;  // rows holds what was there at the stamp
    bool tooMany = false;  // at the stamp
    std::shared_ptr<Connection> rows;
  };

  Kept* Entry(Connection& source, const TableSchema& table, const std::vector<const FieldDef*>& fields);
  static void Fill(Kept& kept, Connection& source, const TableSchema& table,
                   const std::vector<const FieldDef*>& fields);

  std::vector<std::unique_ptr<Kept>> kept_;
};

}  // namespace varnlog::dao
