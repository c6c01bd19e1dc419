#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "db/dao/CellView.h"

namespace varnlog::dao {

/// Which rows of a table are read, and in which order.
struct ScanRange {
  std::string order = {};  // a field of whole numbers; rows with the same stand in the order of their counter
  std::int64_t first = std::numeric_limits<std::int64_t>::min();  // of the order field, or of the counter
  std::int64_t last = std::numeric_limits<std::int64_t>::max();
};

/// Reads a table once from one end to the other, each value as it is stored, at little more than the
/// storage's own cost. As long as it has not come to its end, several scans at a time see the same state.
class TableScan {
 public:
  virtual ~TableScan() = default;
  TableScan(const TableScan&) = delete;
  TableScan& operator=(const TableScan&) = delete;

  /// Goes to the next row, the first at first; false at the end.
  [[nodiscard]] virtual bool Next() = 0;
  /// The current row's values of the fields asked for; they live until Next().
  [[nodiscard]] const std::vector<CellView>& Values() const { return values_; }

 protected:
  explicit TableScan(std::size_t fields) : values_(fields) {}
  std::vector<CellView> values_;
};

}  // namespace varnlog::dao
