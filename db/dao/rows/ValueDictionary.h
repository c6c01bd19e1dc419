#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace varnlog::dao {

/// Numbers the different values of a column, so that a million rows keep 4 bytes each and what is slow is
/// done once a value. Values differ when their bytes do.
class ValueDictionary {
 public:
  ValueDictionary();

  /// The value's number: 0, 1, ... in the order in which the values were first seen. All values together must
  /// stay below 4 GB.
  std::uint32_t Intern(std::string_view value);

  // The same in steps, for whoever has several values at hand. With a dictionary larger than the processor's
  // cache, what takes longest is to wait for memory; between the steps it can arrive.
  [[nodiscard]] static std::uint32_t HashOf(std::string_view value);
  /// To be called first, and some time before Approach().
  void Aim(std::uint32_t hash) const;
  /// To be called some time before Intern().
  void Approach(std::uint32_t hash) const;
  std::uint32_t Intern(std::string_view value, std::uint32_t hash);

  [[nodiscard]] std::size_t Size() const { return offsets_.size(); }
  /// Until the next Intern().
  [[nodiscard]] std::string_view At(std::uint32_t code) const;

  /// What it takes in memory.
  [[nodiscard]] std::size_t Bytes() const;

 private:
  /// A slot leads straight to the value, and the value knows its number: with a million rows what counts is
  /// how often memory has to be waited for.
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t offset = kFree;
  };
  static constexpr std::uint32_t kFree = 0xFFFFFFFF;
  struct Header {
    std::uint32_t code;
    std::uint32_t length;
  };

  [[nodiscard]] Header HeaderAt(std::uint32_t offset) const;
  [[nodiscard]] std::string_view ValueAt(std::uint32_t offset, std::uint32_t length) const;
  std::uint32_t Append(std::string_view value);
  void Grow();

  /// As much memory as the processor reads at once. An entry that fits into one does not lie across two.
  struct alignas(64) Line {
    char bytes[64];
  };

  std::vector<Line> lines_;             // a header and the value, for each value
  std::size_t size_ = 0;                // bytes used of the lines
  std::vector<std::uint32_t> offsets_;  // of the headers, by code
  std::vector<Slot> slots_;             // open addressing; a power of two, at most half full
};

/// For each code the value's place among all, equal values sharing one, starting at 0. `collated` values are
/// in the collation's order, others in that of their bytes.
[[nodiscard]] std::vector<std::uint32_t> RankValues(const ValueDictionary& values, bool collated);

}  // namespace varnlog::dao
