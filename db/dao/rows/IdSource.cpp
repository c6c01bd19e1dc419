#include "db/dao/rows/IdSource.h"

#include <utility>

namespace varnlog::dao {

bool ComputedIds::Fetch(std::size_t /*rows*/, std::vector<std::int64_t>& ids) {
  if (ids.empty())
    ids = std::move(ids_);
  else
    ids.insert(ids.end(), ids_.begin(), ids_.end());
  ids_.clear();
  return true;
}

}  // namespace varnlog::dao
