#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "db/dao/rows/ValueDictionary.h"

namespace varnlog::dao {

/// What a ValueIndex knows so far, column by column.
struct ValueColumns {
  explicit ValueColumns(std::size_t count) : dictionaries(count), codes(count), texts(count), hashes(count) {}

  /// Takes a row: `textAt(i)` is its value of the column i, "" for NULL.
  template <typename TextAt>
  void Add(std::int64_t id, const TextAt& textAt) {
    // Dictionaries do not fit into the processor's cache: each column's place is asked for before it is used.
    for (std::size_t i = 0; i < texts.size(); ++i) {
      texts[i] = textAt(i);
      hashes[i] = ValueDictionary::HashOf(texts[i]);
      dictionaries[i].Aim(hashes[i]);
    }
    for (std::size_t i = 0; i < texts.size(); ++i) dictionaries[i].Approach(hashes[i]);
    for (std::size_t i = 0; i < texts.size(); ++i)
      Push(codes[i], dictionaries[i].Intern(texts[i], hashes[i]));
    Push(ids, static_cast<std::uint32_t>(id));
  }

  /// Grows by a quarter instead of to the double: of a million rows a half-empty array would be most of the
  /// memory.
  static void Push(std::vector<std::uint32_t>& numbers, std::uint32_t number) {
    if (numbers.size() == numbers.capacity()) numbers.reserve(numbers.size() + numbers.size() / 4 + 1024);
    numbers.push_back(number);
  }

  std::vector<ValueDictionary> dictionaries;
  std::vector<std::vector<std::uint32_t>> codes;  // a value's number for each row
  std::vector<std::uint32_t> ids;                 // counters have no more bits
  std::vector<std::string_view> texts;
  std::vector<std::uint32_t> hashes;
};

}  // namespace varnlog::dao
