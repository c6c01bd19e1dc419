#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "db/dao/rows/RowSet.h"
#include "db/dao/sqlite/Schema.h"

namespace varnlog::dao {

/// Compares an index with its table by reading both once: a sum over all entries that does not depend on
/// their order must be the same, and the index must be in its order.
class IndexCheck {
 public:
  struct Column {
    std::size_t field;  // of the table
    bool isText;        // in the engine's text order
  };

  IndexCheck(const TableSchema& table, std::string name, std::vector<Column> columns);

  /// A row of the table: its id, then its fields.
  void TakeRow(std::span<const CellView> row);
  /// To be called after the last row: reads the index.
  void Compare(Connection& connection, std::vector<std::string>& findings);

 private:
  std::string name_;
  std::string query_;  // the index alone, in its order
  std::vector<Column> columns_;
  std::uint64_t tableSum_ = 0;
};

/// Of all indexes of a table. One of another make than the engine's is left to the storage's own check, which
/// is made at once.
[[nodiscard]] std::vector<IndexCheck> IndexChecks(Connection& connection, const TableSchema& table,
                                                  std::vector<std::string>& findings);

/// False where a stored value cannot have come from a field of this type, or is too long for it.
[[nodiscard]] bool FitsField(const CellView& value, const FieldDef& field);

}  // namespace varnlog::dao
