#include <chrono>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "db/dao/sql/LikePattern.h"
#include "tests/support/Table.h"

namespace varnlog::dao {
namespace {

bool Matches(std::string_view pattern, std::string_view text) {
  return LikePattern(pattern).Matches(text);
}

TEST(LikePatternTest, FollowsItsWildcards) {
  using Texts = std::vector<std::string>;
  const Table<std::string, Texts, Texts> cases = {
      // pattern, texts that it matches, texts that it does not
      {"", {""}, {"a"}},
      {"*", {""}, {}},
      {"**", {"anything"}, {}},
      {"Mü*", {"MÜLLER, Hans", "Mu\u0308ller, Hans"}, {"Muller, Hans"}},
      {"müller, h*", {"Müller, Hans"}, {}},
      {"*hans", {"Müller, Hans"}, {"Müller, Hans A."}},
      {"*a*b*", {"xxaxxbxx"}, {"xxbxxaxx"}},
      {"*ab", {"aab"}, {}},
      {"M?ller", {"Müller", "Mu\u0308ller"}, {"Mller"}},
      {"?", {"я"}, {""}},
      {"wei??", {"Weiß"}, {}},  // ß is its two letters, as for "="
      {"WEISS*", {"Weiß"}, {}},
      {"##.#", {"12.5"}, {"1a.5"}},
      {"[a-c]x", {"Bx"}, {"dx"}},
      {"[!a-c]x", {"dx"}, {"ax"}},
      {"[!a-c]", {}, {""}},
      {"[а-я]*", {"Ёлкин"}, {}},
      {"[a-z]*", {"Ärger"}, {}},
      {"[b-z]*", {}, {"Ärger"}},
      {"[äö]*", {"ÖL"}, {}},
      {"[*]", {"*"}, {"a"}},
      {"[#?]", {"?"}, {}},
      {"[a-]", {"-"}, {}},
      {"[-a]", {"-"}, {}},
      {"[!]", {"!"}, {}},
      {"a[]b", {"ab"}, {}},
      {"[z-a]", {}, {"m"}},
      {"[abc", {"[abc"}, {}},  // never closed
      {"[*", {"[x"}, {}},
      {"a]b", {"A]B"}, {}},
      {"%_\\", {"%_\\"}, {}},
      {"%", {}, {"a"}},
      {"'*", {"'s Gravenhage"}, {}},
      {"a\x01*", {"ab"}, {}},
      {"\377?", {"\376a"}, {}}};  // malformed bytes are all the same character
  for (const auto& [pattern, matching, others] : cases) {
    for (const std::string& text : matching) EXPECT_TRUE(Matches(pattern, text)) << pattern << " / " << text;
    for (const std::string& text : others) EXPECT_FALSE(Matches(pattern, text)) << pattern << " / " << text;
  }
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
