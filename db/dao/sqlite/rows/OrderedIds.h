#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/rows/Select.h"

namespace varnlog::dao {

/// Finds the row ids of a statement that is ordered by text fields, for which there is no index, without the
/// storage's sorter. Keeps the last result: the same order again and its reverse cost a copy.
class OrderedIds {
 public:
  /// The ids in the statement's order, equal rows by id in the direction of the last term. Nothing when the
  /// storage should order them: the order does not begin with a text field, has a term that is neither text
  /// nor date, or the fields have too many different values.
  [[nodiscard]] std::optional<std::vector<std::int64_t>> Find(Connection& connection, const Select& select,
                                                              const Parameters& parameters);

 private:
  struct Order;

  [[nodiscard]] std::optional<std::vector<std::int64_t>> FromLast(const Order& wanted,
                                                                  const RowStamp& stamp) const;
  void Keep(Order order, const RowStamp& stamp, const std::vector<std::int64_t>& ids);

  std::shared_ptr<const Order> last_;
  RowStamp stamp_;
  std::vector<std::uint32_t> ids_;  // half of what they take elsewhere; larger ones are not kept
};

}  // namespace varnlog::dao
