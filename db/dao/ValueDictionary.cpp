#include "db/dao/ValueDictionary.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "db/dao/Collation.h"

namespace varnlog::dao {
namespace {

constexpr std::size_t kFirstSlots = 256;

std::uint64_t Mix(std::uint64_t value) {
  value *= 0x9E3779B97F4A7C15U;
  return value ^ (value >> 29U);
}

/// Eight bytes at a time: names are short, and a general hash would cost more than reading the row.
std::uint32_t Hash(std::string_view value) {
  std::uint64_t hash = value.size();
  const char* next = value.data();
  std::size_t left = value.size();
  for (; left > 0; left -= std::min<std::size_t>(left, 8)) {
    std::uint64_t word = 0;
    std::memcpy(&word, next, std::min<std::size_t>(left, 8));
    hash = Mix(hash ^ word);
    next += std::min<std::size_t>(left, 8);
  }
  return static_cast<std::uint32_t>(Mix(hash) >> 32U);
}

}  // namespace

ValueDictionary::ValueDictionary() : slots_(kFirstSlots) {}

std::uint32_t ValueDictionary::Intern(std::string_view value) {
  const std::uint32_t hash = Hash(value);
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = hash & mask;
  while (slots_[slot].code != kFree) {
    if (slots_[slot].hash == hash && At(slots_[slot].code) == value) return slots_[slot].code;
    slot = (slot + 1) & mask;
  }
  const std::uint32_t code = Append(value);
  slots_[slot] = {hash, code};
  if (ends_.size() * 2 > slots_.size()) Grow();
  return code;
}

std::string_view ValueDictionary::At(std::uint32_t code) const {
  const std::size_t begin = code == 0 ? 0 : ends_[code - 1];
  return std::string_view(bytes_).substr(begin, ends_[code] - begin);
}

std::size_t ValueDictionary::Bytes() const {
  return bytes_.capacity() + ends_.capacity() * sizeof(std::size_t) + slots_.size() * sizeof(Slot);
}

std::uint32_t ValueDictionary::Append(std::string_view value) {
  bytes_ += value;
  ends_.push_back(bytes_.size());
  return static_cast<std::uint32_t>(ends_.size() - 1);
}

void ValueDictionary::Grow() {
  std::vector<Slot> larger(slots_.size() * 4);
  const std::size_t mask = larger.size() - 1;
  for (const Slot& old : slots_) {
    if (old.code == kFree) continue;
    std::size_t slot = old.hash & mask;
    while (larger[slot].code != kFree) slot = (slot + 1) & mask;
    larger[slot] = old;
  }
  slots_ = std::move(larger);
}

std::vector<std::uint32_t> RankValues(const ValueDictionary& values, bool collated) {
  const Collation& collation = Collation::Instance();
  const auto compare = [&](std::uint32_t a, std::uint32_t b) {
    return collated ? collation.Compare(values.At(a), values.At(b)) : values.At(a).compare(values.At(b));
  };
  std::vector<std::uint32_t> order(values.Size());
  std::iota(order.begin(), order.end(), 0U);
  std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) { return compare(a, b) < 0; });
  std::vector<std::uint32_t> ranks(values.Size());
  std::uint32_t rank = 0;
  for (std::size_t i = 0; i < order.size(); ++i) {
    if (i > 0 && compare(order[i - 1], order[i]) != 0) ++rank;
    ranks[order[i]] = rank;
  }
  return ranks;
}

}  // namespace varnlog::dao
