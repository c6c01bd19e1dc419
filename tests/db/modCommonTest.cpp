#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "db/modCommon.h"
#include "tests/support/Table.h"
#include "tests/support/TestFolder.h"

namespace varnlog::db {
namespace {

namespace fs = std::filesystem;
using platform::DateTime;

DateTime Date(const char* iso) {
  return DateTime::FromIso(iso).value();
}

TEST(ModCommon, TakesPathsApart) {
  const Table<const char*, const char*, const char*> rows = {
      {"C:\\Daten\\Log.mdb", "Log.mdb", "C:\\Daten"},
      {"/var/lib/Röntgen Log.mdb", "Röntgen Log.mdb", "/var/lib"},
      {"C:\\Daten/gemischt\\x", "x", "C:\\Daten/gemischt"},
      {"Log.mdb", "", ""},
      {"C:\\Daten\\", "", "C:\\Daten"},
      {"/Log.mdb", "Log.mdb", ""},
      {"", "", ""}};
  for (const auto& [path, name, folder] : rows) {
    EXPECT_EQ(FileNamePart(path), name) << path;
    EXPECT_EQ(FolderPart(path), folder) << path;
  }
}

TEST(ModCommon, CutsAtTheFirstZero) {
  EXPECT_EQ(CutAtZero(std::string_view("ab\0cd\0", 6)), "ab");
  EXPECT_EQ(CutAtZero("abc"), "abc");
  EXPECT_EQ(CutAtZero(std::string_view("\0", 1)), "");
}

TEST(ModCommon, ReadsCompactDates) {
  EXPECT_EQ(CompactTextToDate("20240209"), Date("2024-02-09"));
  EXPECT_EQ(CompactTextToDate("20010231"), Date("2001-03-03"));
  for (const char* text : {"", "2024020", "2024020x", "-2024020", "09.02.2024", "00000000"}) {
    EXPECT_FALSE(CompactTextToDate(text).IsSet()) << text;
  }
}

class DottedDate : public testing::Test {
 protected:
  const platform::FixedClock clock_{Date("2024-05-06")};
};

TEST_F(DottedDate, IsTestedAndWidened) {
  const Table<const char*, const char*> widened = {{"1.1.05", "1.1.2005"}, {"1.1.24", "1.1.2024"},
                                                   {"1.1.25", "1.1.1925"}, {"1.1.99", "1.1.1999"},
                                                   {"1.1.5", "1.1.2005"},  {"1.1.0", "1.1.2000"}};
  for (const auto& [entered, year] : widened) {
    std::string text = entered;
    EXPECT_TRUE(IsDottedDate(text, clock_)) << entered;
    EXPECT_EQ(text, year) << entered;
  }
  // No month is asked for its length.
  for (std::string text : {"01.02.1960", "31.02.2001", " 1 . 2 .1960", "31.12.2024", "01.01.1880"})
    EXPECT_TRUE(IsDottedDate(text, clock_)) << text;
  for (std::string text : {"01.01.1879", "01.01.2025", "01.01.100", "00.01.2000", "32.01.2000", "01.00.2000",
                           "01.13.2000", "..2000", ".1.2000", "1..2000", "1.1.", "1.1", "1.1.2000.", "1.1.-5",
                           "a.b.c", "1/1/2000", "99999999999999999999.1.2000", ""}) {
    const std::string entered = text;
    EXPECT_FALSE(IsDottedDate(text, clock_)) << entered;
    EXPECT_EQ(text, entered);
  }
}

TEST_F(DottedDate, IsReadAtFixedPlaces) {
  const Table<const char*, const char*> rows = {
      {"01.02.1960", "1960-02-01"}, {"29.02.2024", "2024-02-29"}, {"31.02.2001", "2001-03-03"},
      {"01.02.60", "1960-02-01"},   {"01.02.24", "2024-02-01"},   {"1.2.1960", "1880-01-01"},
      {"01.2.1960", "1880-01-01"},  {"01.01.1879", "1880-01-01"}, {"07.05.2025", "1880-01-01"},
      {"unbekannt", "1880-01-01"},  {"", "1880-01-01"},           {"01.02. 960", "1880-01-01"},
      {" 1.02.1960", "1960-02-01"}, {" 5. 3.2024", "2024-03-05"}, {"05.3 .2024", "2024-03-05"}};
  for (const auto& [text, expected] : rows) EXPECT_EQ(DottedTextToDate(text, clock_), Date(expected)) << text;
}

TEST(ModCommon, ReadsTimes) {
  const auto read = [](const char* text) {
    return Date("2024-02-09").AtTimeOf(ColonTextToTime(text)).ToIso().substr(11);
  };
  for (const auto& [text, expected] : Table<const char*, const char*>{{"00:00:00", "00:00:00"},
                                                                      {"23:59:59", "23:59:59"},
                                                                      {"7:05:09", "07:05:09"},
                                                                      {"12:3:4", "12:03:04"}}) {
    EXPECT_TRUE(IsColonTime(text)) << text;
    EXPECT_EQ(read(text), expected);
  }
  for (const char* text : {"24:00:00", "12:60:00", "12:00:60", "12:00", ":00:00", "12:00:", "12:00:0x",
                           "12:00:00:00", "-1:00:00", ""}) {
    EXPECT_FALSE(IsColonTime(text)) << text;
    EXPECT_EQ(read(text), "00:00:00") << text;
  }
}

class FileHelpers : public testing::Test {
 protected:
  [[nodiscard]] std::string In(const std::string& name) const { return (folder_ / name).string(); }
  [[nodiscard]] std::string Holding(const std::string& name, const std::string& content) const {
    return folder_.Holding(name, content).string();
  }
  test::TestFolder folder_;
};

TEST_F(FileHelpers, TellFilesFromFolders) {
  const std::string file = Holding("Log Buch.mdb", "x");
  EXPECT_TRUE(FileExists(file));
  EXPECT_FALSE(FolderExists(file));
  EXPECT_FALSE(FileExists(In("")));
  EXPECT_TRUE(FolderExists(In("")));
  EXPECT_TRUE(FolderExists(folder_.Path().string() + "\\.."));
  EXPECT_FALSE(FileExists(In("fehlt")));
  EXPECT_FALSE(FileExists(""));
  EXPECT_FALSE(FolderExists(""));
  EXPECT_FALSE(FileExists(file + "/darunter"));
}

TEST_F(FileHelpers, MakeAllFoldersOfAPath) {
  EXPECT_TRUE(MakeFolderPath(In("a\\b/ü c")));
  EXPECT_TRUE(FolderExists(In("a/b/ü c")));
  EXPECT_TRUE(MakeFolderPath(In("a/b")));
  EXPECT_FALSE(MakeFolderPath(Holding("datei", "x") + "/darunter"));
  EXPECT_FALSE(MakeFolderPath(""));
}

TEST_F(FileHelpers, ChangeTheCurrentFolder) {
  const fs::path before = fs::current_path();
  static_cast<void>(Holding("kalvero.ini", "x"));
  ASSERT_TRUE(MakeFolderPath(In("Programm")));
  EXPECT_TRUE(ChangeToFolder(In("Programm")));
  EXPECT_TRUE(FileExists("..\\kalvero.ini"));
  EXPECT_FALSE(ChangeToFolder(In("fehlt")));
  EXPECT_TRUE(FileExists("..\\kalvero.ini"));
  fs::current_path(before);
}

TEST_F(FileHelpers, FindTablesWithoutRegardToCase) {
  dao::DBEngine engine;
  const auto database = engine.CreateDatabase(In("Log.mdb"), "", dao::kNoOption);
  database->Execute("CREATE TABLE TXray (a INTEGER)");
  EXPECT_TRUE(TableExists(*database, "txRAY"));
  EXPECT_FALSE(TableExists(*database, "TConfig"));
  database->Close();
  EXPECT_THROW(static_cast<void>(TableExists(*database, "TXray")), dao::EngineError);
}

}  // namespace
}  // namespace varnlog::db
