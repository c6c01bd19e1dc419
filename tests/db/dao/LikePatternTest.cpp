#include <chrono>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "db/dao/sql/LikePattern.h"

namespace varnlog::dao {
namespace {

bool Matches(std::string_view pattern, std::string_view text) {
  return LikePattern(pattern).Matches(text);
}

TEST(LikePatternTest, FollowsItsWildcards) {
  const struct {
    const char* pattern;
    const char* text;
    bool matches;
  } cases[] = {
      {"", "", true},
      {"", "a", false},
      {"*", "", true},
      {"**", "anything", true},
      {"Mü*", "MÜLLER, Hans", true},
      {"Mü*", "Muller, Hans", false},
      {"Mü*", "Mu\u0308ller, Hans", true},
      {"müller, h*", "Müller, Hans", true},
      {"*hans", "Müller, Hans", true},
      {"*hans", "Müller, Hans A.", false},
      {"*a*b*", "xxaxxbxx", true},
      {"*a*b*", "xxbxxaxx", false},
      {"*ab", "aab", true},
      {"M?ller", "Müller", true},
      {"M?ller", "Mu\u0308ller", true},
      {"M?ller", "Mller", false},
      {"?", "я", true},
      {"?", "", false},
      {"wei??", "Weiß", true},  // ß is its two letters, as for "="
      {"WEISS*", "Weiß", true},
      {"##.#", "12.5", true},
      {"##.#", "1a.5", false},
      {"[a-c]x", "Bx", true},
      {"[a-c]x", "dx", false},
      {"[!a-c]x", "dx", true},
      {"[!a-c]x", "ax", false},
      {"[!a-c]", "", false},
      {"[а-я]*", "Ёлкин", true},
      {"[a-z]*", "Ärger", true},
      {"[b-z]*", "Ärger", false},
      {"[äö]*", "ÖL", true},
      {"[*]", "*", true},
      {"[*]", "a", false},
      {"[#?]", "?", true},
      {"[a-]", "-", true},
      {"[-a]", "-", true},
      {"[!]", "!", true},
      {"a[]b", "ab", true},
      {"[z-a]", "m", false},
      {"[abc", "[abc", true},  // never closed
      {"[*", "[x", true},
      {"a]b", "A]B", true},
      {"%_\\", "%_\\", true},
      {"%", "a", false},
      {"'*", "'s Gravenhage", true},
      {"a\x01*", "ab", true},
      {"\xFF?",
       "\xFE"
       "a",
       true},  // malformed bytes are all the same character
  };
  for (const auto& c : cases)
    EXPECT_EQ(Matches(c.pattern, c.text), c.matches) << c.pattern << " / " << c.text;
}

/// The meaning of the wildcards, without any care for time.
bool MatchesSimply(std::string_view pattern, std::string_view text) {
  if (pattern.empty()) return text.empty();
  if (pattern.front() == '*') {
    return MatchesSimply(pattern.substr(1), text) ||
           (!text.empty() && MatchesSimply(pattern, text.substr(1)));
  }
  return !text.empty() && (pattern.front() == '?' || pattern.front() == text.front()) &&
         MatchesSimply(pattern.substr(1), text.substr(1));
}

TEST(LikePatternTest, AgreesWithThePlainMeaningOfStars) {
  std::mt19937 random(1);
  const auto text = [&random](std::string_view characters) {
    std::string made;
    for (std::size_t length = random() % 8; length > 0; --length)
      made += characters[random() % characters.size()];
    return made;
  };
  for (int round = 0; round < 50'000; ++round) {
    const std::string pattern = text("ab*?");
    const std::string candidate = text("ab");
    ASSERT_EQ(Matches(pattern, candidate), MatchesSimply(pattern, candidate))
        << pattern << " / " << candidate;
  }
}

TEST(LikePatternTest, ManyStarsStayQuick) {
  std::string pattern;
  for (int i = 0; i < 500; ++i) pattern += "*a";
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(Matches(pattern + "b", std::string(20'000, 'a')));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
}  // namespace varnlog::dao
