#pragma once

#include <cstdint>

namespace varnlog::dao {

/// Compared to find out whether rows that were read may have changed since, by whomever.
struct RowStamp {
  std::int64_t othersChanges = 0;
  std::int64_t ownChanges = 0;
  std::int64_t epoch = 0;
  friend bool operator==(const RowStamp&, const RowStamp&) = default;
};

}  // namespace varnlog::dao
