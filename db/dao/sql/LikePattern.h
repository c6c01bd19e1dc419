#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace varnlog::dao {

/// A pattern of Like, read once and matched against many texts: '*' any text, '?' one character, '#' one
/// digit, [a-z] one of a set, [!a-z] none of it. Letter case is ignored as the collation does, so an ß counts
/// as its two letters; a range means what lies between its ends in the collation's order. A '[' that is never
/// closed and "[]" stand for themselves and for nothing.
class LikePattern {
 public:
  explicit LikePattern(std::string_view pattern);

  /// Takes time in proportion to the text for a pattern with one star, and never more than pattern times
  /// text.
  [[nodiscard]] bool Matches(std::string_view text) const;

  /// The same as a regular expression of POSIX's extended form with escapes, for texts that are folded
  /// already: of a set's range those characters that the letters of the program's languages are made of.
  [[nodiscard]] std::string RegularExpression() const;

 private:
  enum class Kind { kAnyText, kAnyCharacter, kDigit, kLiteral, kSet };
  struct Range {
    char32_t first;
    char32_t last;
  };
  struct Element {
    Kind kind;
    char32_t literal = 0;
    bool negated = false;
    std::vector<Range> ranges;
  };

  void AddSet(std::string_view content);
  [[nodiscard]] static std::string SetExpression(const Element& set);
  [[nodiscard]] bool FailsAtOnce(std::string_view text) const;
  /// `next` gives the character at a position, folded, and moves it on.
  template <typename Next>
  [[nodiscard]] bool Walk(std::string_view text, Next next) const;
  [[nodiscard]] static bool MatchesOne(const Element& element, char32_t character);

  std::vector<Element> elements_;
};

}  // namespace varnlog::dao
