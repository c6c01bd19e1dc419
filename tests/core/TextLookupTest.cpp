#include <chrono>

#include <gtest/gtest.h>

#include "core/Messages.h"
#include "tests/support/FakeTexts.h"
#include "tests/support/FakeUser.h"
#include "tests/support/Table.h"

namespace varnlog::core {
namespace {

TEST(Placeholder, IsReplacedWhereverItStands) {
  const Table<const char*, const char*, const char*, const char*> rows = {
      {"$strFile$ und $STRFILE$", "a.mdb", "a.mdb und a.mdb", "a.mdb und $STRFILE$"},
      {"Öffnen von $strFile$: $strError$", "Ä", "Öffnen von Ä: $strError$", "Öffnen von Ä: $strError$"},
      {"strFile $strFile strFile$", "x", "strFile $strFile strFile$", "strFile $strFile strFile$"},
      {"$strFile$", "", "", ""},
      {"", "x", "", ""},
      {"$$strFile$$", "x", "$x$", "$x$"},
      // A replacement may complete another marker.
      {"$str$strFile$File$", "", "", "$strFile$"},
      // A file may be called like the marker.
      {"<$strFile$> <$strFile$>", "/x/$strFILE$.mdb", "</x/$strFILE$.mdb> </x/$strFILE$.mdb>",
       "</x/$strFILE$.mdb> <$strFile$>"},
      {"$strFile$", "$strFile$", "$strFile$", "$strFile$"}};
  for (const auto& [text, value, all, first] : rows) {
    EXPECT_EQ(ReplacePlaceholder(text, "strFile", value), all) << text;
    EXPECT_EQ(ReplaceFirstPlaceholder(text, "strFile", value), first) << text;
  }
}

TEST(Placeholder, ManyAreReplacedInOnePass) {
  std::string text;
  constexpr int kCount = 200'000;
  for (int i = 0; i < kCount; ++i) text += "$x$.";
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(ReplacePlaceholder(text, "x", "Wert").size(), std::size_t{5} * kCount);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST(Placeholder, ValuesAreNeverSearchedAgain) {
  const Table<const char*, const char*> rows = {
      {"$strFile$: $strError$", "$strError$.mdb: $strFile$"},
      {"$STRERROR$$strfile$ kosten 5 $", "$strFile$$strError$.mdb kosten 5 $"},
      {"$$strFile$ $strOther$ strFile$", "$$strError$.mdb $strOther$ strFile$"},
      {"", ""}};
  for (const auto& [text, filled] : rows) {
    EXPECT_EQ(FillPlaceholders(text, {{"strFile", "$strError$.mdb"}, {"strError", "$strFile$"}}), filled);
  }
}

TEST(Placeholder, NumbersAreGroupedByTheLanguage) {
  const Table<const char*, const char*> rows = {
      {"0", "0"},         {"999", "999"},    {"1000", "1.000"}, {"18792", "18.792"}, {"1234567", "1.234.567"},
      {"-1000", "-1000"}, {"a1000", "a1000"}};
  const test::FakeTexts german{{{"GL_THOUSANDS", "."}, {"XX_TEXT", "$lngCount$ $strFile$"}}};
  for (const auto& [value, filled] : rows) {
    EXPECT_EQ(FilledText(german, "XX_TEXT"_key, {{"lngCount", value}, {"strFile", "1000"}}),
              std::string(filled) + " 1000");
  }
}

TEST(Messages, HaveTheProgramsTitleUnlessOneIsGiven) {
  test::FakeUser user;
  user.answer = MessageAnswer::kNo;
  const test::FakeTexts texts;
  const Messages messages(user, texts);
  EXPECT_FALSE(messages.Confirm("RC_QUIT"_key));
  const Message& shown = user.messages.back();
  EXPECT_EQ(shown.text, "RC_QUIT");
  EXPECT_EQ(shown.key, "RC_QUIT") << "for the help about it";
  EXPECT_EQ(shown.title, "GL_TITLE");
  EXPECT_EQ(shown.icon, MessageIcon::kQuestion);
  EXPECT_EQ(shown.buttons, MessageButtons::kYesNo);
  messages.Show({.key = "RU_SUCCESS"_key, .icon = MessageIcon::kInformation, .title = "RU_XRUPDATE"_key});
  EXPECT_EQ(user.messages.back().title, "RU_XRUPDATE");
}

}  // namespace
}  // namespace varnlog::core
