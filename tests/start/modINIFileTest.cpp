#include <random>

#include <gtest/gtest.h>

#include "start/modINIFile.h"
#include "tests/start/AppFixture.h"
#include "tests/support/Table.h"

namespace varnlog::start {
namespace {

namespace fs = std::filesystem;

class ModIniFile : public testing::Test {
 protected:
  std::string Read(const std::string& section, const std::string& key) const {
    return ini_.ReadString(section, key, path_);
  }
  bool Write(const std::string& section, const std::string& key, const std::string& value) {
    return ini_.WriteString(section, key, value, path_);
  }
  void Holds(const std::string& bytes) const { test::WriteFile(platform::ToPath(path_), bytes); }
  std::string Bytes() const { return test::ReadFile(platform::ToPath(path_)); }

  test::SuiteFolder folder_;
  std::string path_ = (folder_.Program() / "varnlog.ini").string();
  modINIFile ini_;
};

TEST_F(ModIniFile, ReadsValuesByTheRulesOfItsSystem) {
  Holds(
      "ohne=Abschnitt\r\n; [User]\r\n[ User ] \r\n"
      "Leer=\r\n  Blanks \t=\t a b \t\r\nDoppelt=\"  x \"\r\nEinfach='y'\r\nHalb=\"z\r\n"
      "gleich=a=b=c\r\n;Kommentar=nein\r\nSchlüssel=Größe ; kein Kommentar\r\nkein Gleichheitszeichen\r\n"
      "Zweimal=1\r\nzweimal=2\r\n[Nächster [1]]\nx=y");
  const Table<const char*, const char*, const char*> rows = {{"User", "Leer", ""},
                                                             {"USER", "blanks", "a b"},
                                                             {" user ", " Blanks ", "a b"},
                                                             {"User", "Doppelt", "  x "},
                                                             {"User", "Einfach", "y"},
                                                             {"User", "Halb", "\"z"},
                                                             {"User", "gleich", "a=b=c"},
                                                             {"User", "SCHLÜSSEL", "Größe ; kein Kommentar"},
                                                             {"User", "Zweimal", "1"},
                                                             {"NÄCHSTER [1]", "X", "y"},
                                                             {"User", "x", ""},
                                                             {"User", "ohne", ""},
                                                             {"User", "Kommentar", ""},
                                                             {"User", "kein Gleichheitszeichen", ""},
                                                             {"", "ohne", ""},
                                                             {"fehlt", "x", ""},
                                                             {"Use", "Leer", ""}};
  for (const auto& [section, key, expected] : rows) EXPECT_EQ(Read(section, key), expected) << section << key;
}

TEST_F(ModIniFile, ReadsIntegersAsFarAsTheDigitsGo) {
  const Table<const char*, int> rows = {{"70", 70},       {" 8 mA", 8}, {"\"65\"", 65},     {"007", 7},
                                        {"32767", 32767}, {"32768", 0}, {"99999999999", 0}, {"-5", 0},
                                        {"+5", 0},        {"0x10", 0},  {"kV70", 0},        {"", 0},
                                        {"6.5", 6}};
  for (const auto& [value, expected] : rows) {
    Holds(std::string("[XRaysIO]\nkV=") + value + "\n");
    EXPECT_EQ(ini_.ReadInteger("XRaysIO", "kV", path_), expected) << value;
  }
  EXPECT_EQ(ini_.ReadInteger("XRaysIO", "mA", path_), 0);
  EXPECT_EQ(ini_.ReadInteger("XRaysIO", "kV", path_ + ".fehlt"), 0);
}

TEST_F(ModIniFile, CutsLongValuesBetweenCharacters) {
  const std::string stored(300, 'x');
  ASSERT_TRUE(Write("User", "lang", stored));
  EXPECT_EQ(Read("User", "lang"), stored.substr(0, 255));
  std::string umlauts;
  for (int i = 0; i < 300; ++i) umlauts += "ü";
  ASSERT_TRUE(Write("User", "lang", umlauts));
  EXPECT_EQ(Read("User", "lang"), umlauts.substr(0, 255 * 2));
}

TEST_F(ModIniFile, ReadsBackEveryValueItTook) {
  const char* values[] = {"",    "1",      "  Blanks  ",          "\"zitiert\"", "'x'", "a=b", ";",
                          "[x]", "O'Neil", "Müller-Lüdenscheidt", "Иванов",      "\"",  "\t"};
  for (const char* value : values) {
    ASSERT_TRUE(Write("User", "Name", value)) << value;
    EXPECT_EQ(Read("User", "Name"), value);
    EXPECT_EQ(Read("User", "Nachbar"), "");
  }
}

TEST_F(ModIniFile, KeepsEveryOtherLine) {
  Holds("; oben\r\nirgendwas\r\n[A]\r\nx = 1 \r\n\r\n[B]\r\n???\r\ny=2\r\n\r\n; unten");
  EXPECT_TRUE(Write("b", "Y", "3"));
  EXPECT_TRUE(Write("A", "neu", "4"));
  EXPECT_TRUE(Write("C\\Pfad [1]\\Log.mdb", "z", "5"));
  EXPECT_EQ(Bytes(),
            "; oben\r\nirgendwas\r\n[A]\r\nx = 1 \r\nneu=4\r\n\r\n[B]\r\n???\r\nY=3\r\n\r\n; unten\r\n"
            "[C\\Pfad [1]\\Log.mdb]\r\nz=5\r\n");
  EXPECT_EQ(Read("c\\pfad [1]\\log.mdb", "z"), "5");
}

TEST_F(ModIniFile, RefusesNamesAndValuesThatWouldReadAsSomethingElse) {
  Holds("[User]\nx=1\n");
  const std::string zero("a\0b", 3);
  EXPECT_FALSE(Write("User", "x", "1\n[App]\nLanguage=GB"));
  EXPECT_FALSE(Write("User", "x", zero));
  EXPECT_FALSE(Write("User]\n[App", "x", "1"));
  EXPECT_FALSE(Write("", "x", "1"));
  for (const char* key : {"", " ", "a=b", ";x", "[x", "a\rb"}) EXPECT_FALSE(Write("User", key, "1")) << key;
  EXPECT_EQ(Bytes(), "[User]\nx=1\n");
}

TEST_F(ModIniFile, LeavesAFileInItsCodePageWhileItCan) {
  Holds("[INSTALL]\nSite=Praxis M\xFCller\nnoise=\x81\x01\xFF\n");
  EXPECT_EQ(Read("INSTALL", "Site"), "Praxis Müller");
  EXPECT_TRUE(Write("INSTALL", "Ort", "Köln"));
  EXPECT_EQ(Bytes(), "[INSTALL]\nSite=Praxis M\xFCller\nnoise=\x81\x01\xFF\nOrt=K\xF6ln\n");
  EXPECT_TRUE(Write("INSTALL", "Ort", "Москва"));
  EXPECT_EQ(Read("INSTALL", "Ort"), "Москва");
  EXPECT_EQ(Read("INSTALL", "Site"), "Praxis Müller");
  Holds("[INSTALL]\nSite=\xCF\xF0\xE0\xEA\xF1\xE8\xF1\n");
  EXPECT_EQ(modINIFile("CYR").ReadString("INSTALL", "Site", path_), "Праксис");
}

TEST_F(ModIniFile, ReadsBehindAByteOrderMarkAndKeepsIt) {
  Holds("\xEF\xBB\xBF[User]\nx=ü\n");
  EXPECT_EQ(Read("User", "x"), "ü");
  EXPECT_TRUE(Write("User", "x", "ä"));
  EXPECT_EQ(Bytes(), "\xEF\xBB\xBF[User]\nx=ä\n");
}

TEST_F(ModIniFile, ResolvesRelativeNamesFromTheCurrentFolder) {
  test::WriteFile(folder_.Suite() / "kalvero.ini", "[INSTALL]\nSite=Praxis\n");
  const fs::path before = fs::current_path();
  fs::current_path(folder_.Program());
  EXPECT_EQ(ini_.ReadString("INSTALL", "Site", "..\\kalvero.ini"), "Praxis");
  fs::current_path(before);
}

TEST_F(ModIniFile, SurvivesNoise) {
  std::mt19937 random(4711);
  for (int round = 0; round < 40; ++round) {
    std::string noise(random() % 4000, '\0');
    const std::string likely = "[]=;\n\r\"' \0Ux1\x81";
    for (char& c : noise)
      c = random() % 2 == 0 ? likely[random() % likely.size()] : static_cast<char>(random());
    Holds(noise);
    static_cast<void>(Read("U", "x"));
    ASSERT_TRUE(Write("User", "x", "neu")) << round;
    ASSERT_EQ(Read("User", "x"), "neu") << round;
    ASSERT_TRUE(Bytes().starts_with(noise)) << round;
  }
}

TEST_F(ModIniFile, CopesWithLinesOfTenMegabytes) {
  const std::string longLine(10'000'000, 'x');
  Holds("[" + longLine + "\n[User]\ny=" + longLine + "\nz=2\n");
  EXPECT_EQ(Read("User", "z"), "2");
  EXPECT_EQ(Read("User", "y").size(), 255U);
  EXPECT_TRUE(Write("User", "z", "3"));
  EXPECT_EQ(Read("User", "z"), "3");
}

TEST_F(ModIniFile, NeverReplacesWhatItCannotRead) {
  EXPECT_FALSE(ini_.WriteString("User", "x", "y", (folder_.Program() / "fehlt" / "x.ini").string()));
  fs::create_directory(platform::ToPath(path_));
  EXPECT_EQ(Read("User", "x"), "");
  EXPECT_FALSE(Write("User", "x", "1"));
  EXPECT_TRUE(fs::is_directory(platform::ToPath(path_)));
  fs::remove(platform::ToPath(path_));
}

}  // namespace
}  // namespace varnlog::start
