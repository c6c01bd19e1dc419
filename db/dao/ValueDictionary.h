#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace varnlog::dao {

/// Numbers the different values of a column, so that a million rows keep 4 bytes each and what is slow is
/// done once a value. Values differ when their bytes do.
class ValueDictionary {
 public:
  ValueDictionary();

  /// The value's number: 0, 1, ... in the order in which the values were first seen.
  std::uint32_t Intern(std::string_view value);

  [[nodiscard]] std::size_t Size() const { return ends_.size(); }
  /// Until the next Intern().
  [[nodiscard]] std::string_view At(std::uint32_t code) const;

  /// What it takes in memory.
  [[nodiscard]] std::size_t Bytes() const;

 private:
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t code = kFree;
  };
  static constexpr std::uint32_t kFree = 0xFFFFFFFF;

  std::uint32_t Append(std::string_view value);
  void Grow();

  std::string bytes_;              // all values, one after the other
  std::vector<std::size_t> ends_;  // where each ends
  std::vector<Slot> slots_;        // open addressing; a power of two, at most half full
};

/// For each code the value's place among all, equal values sharing one, starting at 0. `collated` values are
/// in the collation's order, others in that of their bytes.
[[nodiscard]] std::vector<std::uint32_t> RankValues(const ValueDictionary& values, bool collated);

}  // namespace varnlog::dao
