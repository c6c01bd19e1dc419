#include "db/dao/RepairReport.h"

namespace varnlog::dao {

std::int64_t CountOf(const std::vector<IdRange>& ranges) {
  std::int64_t count = 0;
  for (const IdRange& range : ranges) count += range.last - range.first + 1;
  return count;
}

std::string RangesText(const std::vector<IdRange>& ranges, std::size_t most) {
  constexpr std::string_view kMore = ", ...";
  std::string text;
  for (const IdRange& range : ranges) {
    std::string next = (text.empty() ? "" : ", ") + std::to_string(range.first);
    if (range.last != range.first) next += "-" + std::to_string(range.last);
    if (text.size() + next.size() + kMore.size() > most) return text.append(kMore);
    text += next;
  }
  return text;
}

}  // namespace varnlog::dao
