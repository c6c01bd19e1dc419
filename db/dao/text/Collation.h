#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace varnlog::dao {

/// The engine's one rule for text: root order with ß among the ss, letter case ignored, accents kept. "=",
/// Like, DISTINCT, ORDER BY and index seeks agree on it. Control characters (but tab and line breaks) and
/// other characters without a weight do not count at all.
class Collation {
 public:
  Collation();
  ~Collation();
  Collation(const Collation&) = delete;
  Collation& operator=(const Collation&) = delete;

  /// One for the process; comparing is safe from one thread at a time.
  [[nodiscard]] static const Collation& Instance();

  /// Makes the full rules on another processor, for work that will need them.
  void MakeAhead() const;

  /// Negative, 0 or positive, as the order of two UTF-8 texts. Malformed bytes count as U+FFFD.
  [[nodiscard]] int Compare(std::string_view a, std::string_view b) const;
  /// The same by the full rules alone, without the short cuts; what Compare() is tested against.
  [[nodiscard]] int CompareFully(std::string_view a, std::string_view b) const;
  /// Bytes whose plain order is the order of the texts.
  [[nodiscard]] std::string SortKey(std::string_view text) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

/// What Like compares: two texts that the collation holds equal fold to the same bytes, for every letter of
/// the program's languages. Lower case, ß as ss, accents composed with their letter, and without the
/// characters that do not count.
[[nodiscard]] std::string FoldCase(std::string_view text);

}  // namespace varnlog::dao
