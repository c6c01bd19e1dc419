#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/CodePage.h"
#include "report/TextWrap.h"
#include "tests/support/Table.h"

namespace varnlog::report {
namespace {

using testing::ElementsAreArray;

/// Each character is one point wide.
class PointMetrics final : public TextMetrics {
 public:
  [[nodiscard]] double Width(std::string_view text, int) const override {
    return static_cast<double>(platform::CharacterCount(text));
  }
  [[nodiscard]] bool IsRightToLeft(std::string_view) const override { return false; }
};

using Cases = Table<const char*, int, int, std::vector<std::string>>;

/// Each text in its room: width, lines, and how it is wrapped.
void ExpectWrapped(const Cases& cases) {
  for (const auto& [text, width, lines, wrapped] : cases)
    EXPECT_THAT(WrapText(text, {static_cast<double>(width), 0, lines}, PointMetrics()),
                ElementsAreArray(wrapped))
        << text << " in " << width << " by " << lines;
}

TEST(TextWrapTest, BreaksWhereAReaderWould) {
  ExpectWrapped({{"kurz", 10, 3, {"kurz"}},
                 {"", 10, 3, {""}},
                 {"eins zwei drei", 9, 3, {"eins zwei", "drei"}},
                 {"eins zwei drei", 8, 3, {"eins", "zwei", "drei"}},
                 {"eins   zwei", 5, 3, {"eins", "zwei"}},
                 {"Meier-Müller", 8, 3, {"Meier-", "Müller"}},
                 {"am 1999-03-02", 10, 3, {"am", "1999-03-02"}},
                 {"oben/unten", 6, 3, {"oben/", "unten"}},
                 {"äöüßäöüß", 3, 4, {"äöü", "ßäö", "üß"}},
                 {"漢字漢字漢", 2, 4, {"漢字", "漢字", "漢"}},
                 {"eins\rzwei\r\ndrei\nvier", 9, 9, {"eins", "zwei", "drei", "vier"}},
                 {"eins\r\r\n\n  \rzwei\n", 9, 9, {"eins", "zwei"}},
                 {"a\tb\001c", 9, 9, {"a b c"}}});
}

TEST(TextWrapTest, SaysWhereItWasCut) {
  ExpectWrapped({{"eins zwei drei", 9, 1, {"eins zwe…"}},
                 {"eins zwei drei vier", 9, 2, {"eins zwei", "drei vier"}},
                 {"eins zwei drei vier", 8, 2, {"eins", "zwei dr…"}},
                 {"eins\rzwei", 9, 1, {"eins…"}},
                 {"neunneun\rzwei", 8, 1, {"neunneu…"}},
                 {"langeswort", 5, 1, {"lang…"}},
                 {"e\u0301e\u0301e\u0301", 3, 1, {"e\u0301…"}},  // an accent is never parted from its letter
                 {"ab", 0, 1, {"…"}},
                 {"ab", 0, 3, {"a", "b"}}});
}

TEST(TextWrapTest, ATextThatBreaksItselfDoesNotFitOneLine) {
  const TextRoom room{5, 0, 3};
  EXPECT_TRUE(FitsOneLine("12345", room, PointMetrics()));
  EXPECT_FALSE(FitsOneLine("123456", room, PointMetrics()));
  EXPECT_FALSE(FitsOneLine("1\r2", room, PointMetrics()));
  EXPECT_FALSE(FitsOneLine("1\t2", room, PointMetrics()));
}

TEST(TextWrapTest, DamagedTextLosesNothingAndEnds) {
  const std::string damaged = "\xC3\xC3\xC3(\xFF\xFE\x80\x80";
  const TextRoom room{2, 0, 99};
  std::string joined;
  for (const std::string& line : WrapText(damaged, room, PointMetrics())) joined += line;
  EXPECT_EQ(joined, damaged);
}

}  // namespace
}  // namespace varnlog::report
