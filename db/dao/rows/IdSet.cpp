#include "db/dao/IdSet.h"

#include <algorithm>
#include <utility>

namespace varnlog::dao {

namespace {

/// A bit costs a 64th of a number.
constexpr std::int64_t kBitsPerNumber = 64;

}  // namespace

IdSet::IdSet(std::vector<std::int64_t> ids) : count_(static_cast<std::int64_t>(ids.size())) {
  if (ids.empty()) return;
  const auto [least, greatest] = std::ranges::minmax(ids);
  first_ = least;
  if ((greatest - least) / kBitsPerNumber <= count_) {
    bits_.resize(static_cast<std::size_t>(greatest - least + 1));
    for (const std::int64_t id : ids) bits_[static_cast<std::size_t>(id - first_)] = true;
  } else {
    std::ranges::sort(ids);
    sorted_ = std::move(ids);
  }
}

bool IdSet::Contains(std::int64_t id) const {
  if (bits_.empty()) return std::ranges::binary_search(sorted_, id);
  const auto bit = static_cast<std::size_t>(id - first_);
  return id >= first_ && bit < bits_.size() && bits_[bit];
}

std::optional<std::int64_t> IdSet::From(std::int64_t id) const {
  if (bits_.empty()) {
    const auto found = std::ranges::lower_bound(sorted_, id);
    return found == sorted_.end() ? std::nullopt : std::optional(*found);
  }
  for (auto bit = static_cast<std::size_t>(std::max(id - first_, std::int64_t{0})); bit < bits_.size();
       ++bit) {
    if (bits_[bit]) return first_ + static_cast<std::int64_t>(bit);
  }
  return std::nullopt;
}

void IdSet::Set(std::int64_t id, bool contained) {
  if (Contains(id) == contained) return;
  count_ += contained ? 1 : -1;
  const auto bit = static_cast<std::size_t>(id - first_);
  if (!bits_.empty() && id >= first_ && bit < bits_.size()) {
    bits_[bit] = contained;
    return;
  }
  // Beyond the others: kept with them in the slower form.
  for (std::size_t i = 0; i < bits_.size(); ++i) {
    if (bits_[i]) sorted_.push_back(first_ + static_cast<std::int64_t>(i));
  }
  bits_.clear();
  const auto place = std::ranges::lower_bound(sorted_, id);
  if (contained) {
    sorted_.insert(place, id);
  } else {
    sorted_.erase(place);
  }
}

}  // namespace varnlog::dao
