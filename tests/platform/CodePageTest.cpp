#include <stdexcept>

#include <gtest/gtest.h>

#include "platform/CodePage.h"
#include "tests/support/Table.h"

namespace varnlog::platform {
namespace {

TEST(CodePage, ReadsNamesAsTheSuiteWritesThem) {
  const Table<int, std::string, std::string> rows = {
      {850, "M\201ller-L\201denscheidt, Ren\202", "Müller-Lüdenscheidt, René"},
      {850, "Gr\224\341e", "Größe"},
      {866, "\x88\xA2\xA0\xAD\xAE\xA2", "Иванов"},
      {1252, "\200 Stra\337e", "€ Straße"},
      {1251, "\xC8\xE2\xE0\xED\xEE\xE2", "Иванов"},
      {437, "\x84\x94\x81", "äöü"}};
  for (const auto& [number, bytes, text] : rows) {
    const CodePage page(number);
    EXPECT_EQ(page.ToUtf8(bytes), text) << number;
    EXPECT_EQ(page.FromUtf8(text), bytes) << number;
  }
}

TEST(CodePage, GivesEveryByteACharacterAndAsciiItself) {
  for (const int number : {437, 850, 866, 1250, 1251, 1252}) {
    const CodePage page(number);
    for (int value = 0; value < 256; ++value) {
      const std::string byte(1, static_cast<char>(value));
      const std::string text = page.ToUtf8(byte);
      ASSERT_EQ(CharacterCount(text), 1U) << number << ' ' << value;
      ASSERT_TRUE(IsUtf8(text)) << number << ' ' << value;
      if (value < 0x80) {
        ASSERT_EQ(text, byte) << number;
      }
      if (text != "\xEF\xBF\xBD") {
        ASSERT_EQ(page.FromUtf8(text), byte) << number << ' ' << value;
      }
    }
  }
}

TEST(CodePage, PutsAQuestionMarkForWhatItDoesNotHave) {
  EXPECT_EQ(CodePage(850).FromUtf8("Иван 😀 Ä\xFF"), "???? ? \x8E?");
}

TEST(CodePage, RefusesPagesItCannotHold) {
  for (const int number : {0, -1, 1, 932, 65001, 99999}) {
    EXPECT_THROW(CodePage{number}, std::invalid_argument) << number;
  }
}

TEST(Utf8, TellsWellFormedFromMalformed) {
  const Table<std::string, bool, std::size_t> rows = {
      {"", true, 0},
      {"plain text that is longer than one word of the machine", true, 54},
      {"Zähne 歯 🦷", true, 9},
      {"\xF4\x8F\xBF\xBF", true, 1},   // the last character
      {"\xF4\x90\x80\x80", false, 4},  // beyond it
      {"\xC0\xAF", false, 2},          // overlong
      {"\xE0\x80\xAF", false, 3},      // overlong
      {"\xED\xA0\x80", false, 3},      // surrogate
      {"\x80", false, 1},              // tail without a head
      {"abcdefgh\xC3", false, 9},      // cut in two
      {"\xE2\x82", false, 2},          // cut in three
      {"\xFF\xFE", false, 2}};
  for (const auto& [bytes, wellFormed, characters] : rows) {
    EXPECT_EQ(IsUtf8(bytes), wellFormed) << testing::PrintToString(bytes);
    EXPECT_EQ(CharacterCount(bytes), characters) << testing::PrintToString(bytes);
  }
}

TEST(Utf8, CutsBetweenCharacters) {
  EXPECT_EQ(FirstCharacters("Zähne", 2), "Zä");
  EXPECT_EQ(FirstCharacters("Zähne", 5), "Zähne");
  EXPECT_EQ(FirstCharacters("Zähne", 6), "Zähne");
  EXPECT_EQ(FirstCharacters("🦷🦷🦷", 2), "🦷🦷");
  EXPECT_EQ(FirstCharacters("ää", 0), "");
  EXPECT_EQ(FirstCharacters("\xC3\xC3\xC3", 2), "\xC3\xC3");
}

TEST(Utf8, RaisesLettersOfEveryAlphabet) {
  EXPECT_EQ(UpperCase("größe éà иванов ς Ab1"), "GRÖßE ÉÀ ИВАНОВ Σ AB1");
  EXPECT_EQ(UpperCase("a\xFFz"), "A\xFFZ");
}

}  // namespace
}  // namespace varnlog::platform
