#include "db/dao/rows/ValueDictionary.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include "db/dao/text/Collation.h"

namespace varnlog::dao {
namespace {

constexpr std::size_t kFirstSlots = 256;

void Prefetch([[maybe_unused]] const void* address) {
#ifdef __GNUC__
  __builtin_prefetch(address);
#endif
}

}  // namespace

ValueDictionary::ValueDictionary() : slots_(kFirstSlots) {}

std::uint32_t ValueDictionary::Intern(std::string_view value) {
  return Intern(value, HashOf(value));
}

std::uint32_t ValueDictionary::HashOf(std::string_view value) {
  return static_cast<std::uint32_t>(XXH3_64bits(value.data(), value.size()));
}

void ValueDictionary::Aim(std::uint32_t hash) const {
  Prefetch(&slots_[hash & (slots_.size() - 1)]);
}

void ValueDictionary::Approach(std::uint32_t hash) const {
  const Slot& slot = slots_[hash & (slots_.size() - 1)];
  if (slot.offset != kFree) Prefetch(reinterpret_cast<const char*>(lines_.data()) + slot.offset);
}

std::uint32_t ValueDictionary::Intern(std::string_view value, std::uint32_t hash) {
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = hash & mask;
  for (; slots_[slot].offset != kFree; slot = (slot + 1) & mask) {
    if (slots_[slot].hash != hash) continue;
    const Header header = HeaderAt(slots_[slot].offset);
    if (ValueAt(slots_[slot].offset, header.length) == value) return header.code;
  }
  const std::uint32_t offset = Append(value);
  slots_[slot] = {hash, offset};
  if (offsets_.size() * 2 > slots_.size()) Grow();
  return HeaderAt(offset).code;
}

ValueDictionary::Header ValueDictionary::HeaderAt(std::uint32_t offset) const {
  Header header{};
  std::memcpy(&header, reinterpret_cast<const char*>(lines_.data()) + offset, sizeof header);
  return header;
}

std::string_view ValueDictionary::ValueAt(std::uint32_t offset, std::uint32_t length) const {
  return {reinterpret_cast<const char*>(lines_.data()) + offset + sizeof(Header), length};
}

std::string_view ValueDictionary::At(std::uint32_t code) const {
  const std::uint32_t offset = offsets_[code];
  return ValueAt(offset, HeaderAt(offset).length);
}

std::size_t ValueDictionary::Bytes() const {
  return lines_.capacity() * sizeof(Line) + offsets_.capacity() * sizeof(std::uint32_t) +
         slots_.size() * sizeof(Slot);
}

std::uint32_t ValueDictionary::Append(std::string_view value) {
  const std::size_t needed = sizeof(Header) + value.size();
  const std::size_t left = sizeof(Line) - size_ % sizeof(Line);
  if (needed > left) size_ += left;
  const auto offset = static_cast<std::uint32_t>(size_);
  const Header header{static_cast<std::uint32_t>(offsets_.size()), static_cast<std::uint32_t>(value.size())};
  size_ += needed;
  if (size_ > lines_.size() * sizeof(Line)) lines_.resize((size_ / sizeof(Line) + 1) * 3 / 2);
  char* const entry = reinterpret_cast<char*>(lines_.data()) + offset;
  std::memcpy(entry, &header, sizeof header);
  std::copy(value.begin(), value.end(), entry + sizeof header);
  offsets_.push_back(offset);
  return offset;
}

void ValueDictionary::Grow() {
  std::vector<Slot> larger(slots_.size() * 4);
  const std::size_t mask = larger.size() - 1;
  for (const Slot& old : slots_) {
    if (old.offset == kFree) continue;
    std::size_t slot = old.hash & mask;
    while (larger[slot].offset != kFree) slot = (slot + 1) & mask;
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
