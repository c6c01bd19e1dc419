#include "db/dao/rows/RowStore.h"

namespace varnlog::dao {

bool AreDense(std::span<const std::int64_t> ids) {
  constexpr std::int64_t kLargestGap = 4;
  const std::int64_t step = ids.size() > 1 && ids[1] < ids[0] ? -1 : 1;
  for (std::size_t i = 0; i + 1 < ids.size(); ++i) {
    const std::int64_t gap = (ids[i + 1] - ids[i]) * step;
    if (gap < 1 || gap > kLargestGap) return false;
  }
  return true;
}

}  // namespace varnlog::dao
