#include <cstdlib>

#include <gtest/gtest.h>

#include "db/modCommon.h"
#include "legacy/LoadTables.h"
#include "start/Language.h"
#include "tests/start/AppFixture.h"

namespace varnlog::start {
namespace {

using core::TextKey;
using core::literals::operator""_key;

class LanguageTexts : public testing::Test {
 protected:
  void SetUp() override {
    folder_.InstallProgram();
    std::filesystem::remove(folder_.Program() / "verbalo.mdb");
    dao::DBEngine engine;
    const auto database =
        engine.CreateDatabase((folder_.Program() / "verbalo.mdb").string(), "", dao::kNoOption);
    database->Execute(
        "CREATE TABLE TRes (TResSLangKey TEXT(8) COLLATE JET, TResSTextKey TEXT(64) COLLATE JET,"
        " TResSText TEXT COLLATE JET)");
    database->Execute(
        "INSERT INTO TRes VALUES"
        " ('D', 'MN_CAPTION', 'Röntgenkontrollbuch'),"
        " ('GB', 'MN_CAPTION', 'X-ray log book'),"
        " ('D', 'MN_LINES', 'Zeile1$CR$Zeile2$cr$$TAB$Ende $strFile$'),"
        " ('GB', 'MN_ENGLISH', 'only'),"
        " ('D', 'MN_NOTEXT', NULL)");
    database->Close();
  }

  test::SuiteFolder folder_;
  core::Globals globals_ = folder_.NewGlobals();
  Language language_{globals_};
};

TEST_F(LanguageTexts, AreThoseOfTheCurrentLanguageWithTheirLineBreaks) {
  ASSERT_TRUE(language_.InitLanguage()) << language_.InitError();
  EXPECT_EQ(language_.GetText("MN_CAPTION"_key), "Röntgenkontrollbuch");
  EXPECT_EQ(language_.GetText("MN_ENGLISH"_key), "") << "no other language stands in";
  EXPECT_TRUE(language_.SetLanguage("GB"));
  EXPECT_EQ(language_.GetText("MN_CAPTION"_key), "X-ray log book");
  EXPECT_EQ(language_.GetText("MN_LINES"_key), "");
  EXPECT_TRUE(language_.SetLanguage("D"));
  EXPECT_EQ(language_.GetText("MN_LINES"_key), "Zeile1\rZeile2\r\tEnde $strFile$");
}

TEST_F(LanguageTexts, AreEmptyWhereThereAreNone) {
  EXPECT_EQ(language_.GetText("MN_CAPTION"_key), "") << "before it is opened";
  ASSERT_TRUE(language_.InitLanguage());
  EXPECT_EQ(language_.GetText("MN_NOTEXT"_key), "");
  EXPECT_EQ(language_.GetText("MN_UNKNOWN"_key), "");
  EXPECT_EQ(language_.GetText(TextKey("MN_'CAPTION")), "");
  EXPECT_EQ(language_.GetText(TextKey("x' OR TRes.TResSTextKey='MN_CAPTION")), "Röntgenkontrollbuch")
      << "the key goes into the statement as it is";
  EXPECT_EQ(language_.GetText("MN_CAPTION"_key), "Röntgenkontrollbuch") << "a bad key leaves no trace";
}

// The other programs of the suite may bring the database in its old format.
TEST_F(LanguageTexts, ComeFromAnOldDatabaseToo) {
  const char* samples = std::getenv("VARNLOG_JET_SAMPLES");
  if (samples == nullptr) GTEST_SKIP() << "VARNLOG_JET_SAMPLES names no folder";
  legacy::InstallJetFormat();
  varnlog::test::CopyOver(std::filesystem::path(samples) / "others/texts-jet4.mdb",
                          folder_.Program() / "verbalo.mdb");
  ASSERT_TRUE(language_.InitLanguage()) << language_.InitError();
  EXPECT_EQ(language_.GetText(TextKey("mSearch")), "Suchen …");
  EXPECT_TRUE(language_.SetLanguage("CYR"));
  EXPECT_EQ(language_.GetText(TextKey("lSize")), "Размер «новый»");
  EXPECT_EQ(language_.GetText("MN_CAPTION"_key), "");
}

TEST_F(LanguageTexts, SayWhyTheyCannotBeOpened) {
  const std::filesystem::path file = folder_.Program() / "verbalo.mdb";
  test::WriteFile(file, std::string(5000, 'x'));
  EXPECT_FALSE(language_.InitLanguage());
  EXPECT_NE(language_.InitError(), "");
  std::filesystem::remove(file);
  EXPECT_FALSE(language_.InitLanguage());
  EXPECT_FALSE(std::filesystem::exists(file)) << "none is made";
  std::filesystem::remove(folder_.Program() / "system.mdw");
  EXPECT_FALSE(language_.InitLanguage());
  EXPECT_NE(language_.InitError().find("system.mdw"), std::string::npos) << language_.InitError();
}

}  // namespace
}  // namespace varnlog::start
