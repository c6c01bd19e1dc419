#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "db/dao/rows/RowSet.h"
#include "db/dao/sqlite/Statement.h"

namespace varnlog::dao {

class Connection;

/// Which rows of a table are read, and in which order.
struct ScanRange {
  std::string order = {};  // a field of whole numbers; rows with the same stand in the order of their counter
  std::int64_t first = std::numeric_limits<std::int64_t>::min();  // of the order field, or of the counter
  std::int64_t last = std::numeric_limits<std::int64_t>::max();
};

/// Reads a table once from one end to the other, each value as it is stored, at little more than the
/// storage's own cost. As long as it has not come to its end nobody else can change the file, so that several
/// scans at a time see the same state.
class TableScan {
 public:
  TableScan(std::shared_ptr<Connection> connection, std::string_view table,
            std::span<const std::string> fields, const ScanRange& range);

  /// Goes to the next row, the first at first; false at the end.
  [[nodiscard]] bool Next();
  /// The current row's values of the fields asked for; they live until Next().
  [[nodiscard]] const std::vector<CellView>& Values() const { return values_; }

 private:
  std::shared_ptr<Connection> connection_;
  Statement rows_;
  std::vector<CellView> values_;
};

}  // namespace varnlog::dao
