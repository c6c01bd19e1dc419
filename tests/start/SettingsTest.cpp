#include <gtest/gtest.h>

#include "start/StartUp.h"
#include "start/SupportText.h"
#include "start/modINIFile.h"
#include "tests/start/AppFixture.h"
#include "tests/support/Table.h"

namespace varnlog::start {
namespace {

using core::SelectionKind;
using platform::DateTime;

class Settings : public testing::Test {
 protected:
  void SetUp() override { test::WriteFile(platform::ToPath(log_), "x"); }
  void Holds(const std::string& lines) { test::WriteFile(platform::ToPath(globals_.IniFileGl), lines); }
  void Load() { LoadSettings(globals_, ini_); }

  test::SuiteFolder folder_;
  std::string log_ = folder_.Data("Log [alt].mdb");
  modINIFile ini_;
  core::Globals globals_ = folder_.NewGlobals();
};

TEST_F(Settings, AreAllOnWithoutAnIniFile) {
  globals_.OptBigIcons = globals_.OptTbrVisible = globals_.OptSbrVisible = false;
  globals_.UpdateOnActivation = false;
  Load();
  EXPECT_TRUE(globals_.OptBigIcons && globals_.OptTbrVisible && globals_.OptSbrVisible);
  EXPECT_TRUE(globals_.UpdateOnActivation);
  EXPECT_EQ(globals_.strDataFileGl, folder_.Data("Varnlog.mdb"));
  EXPECT_EQ(globals_.SortSelectionGl, SelectionKind::kAll);
  NoteVerified(globals_, ini_, platform::SystemClock(), true);
  Load();
  EXPECT_TRUE(globals_.OptTbrVisible && globals_.UpdateOnActivation && !globals_.TakeInAtOnce)
      << "a program that was killed in its first run leaves a file with such notes alone";
  Holds("[User]\nOptBigIcons=true\nOptTbrVisible=yes\nOptSbrVisible=1\n");
  Load();
  EXPECT_FALSE(globals_.OptBigIcons || globals_.OptTbrVisible || globals_.UpdateOnActivation);
  EXPECT_TRUE(globals_.OptSbrVisible) << "only 1 is true once there is a file";
}

TEST_F(Settings, ComeBackAsTheyWereSaved) {
  globals_.OptBigIcons = false;
  globals_.UpdateOnActivation = false;
  globals_.strDataFileGl = log_;
  globals_.SortSelectionGl = SelectionKind::kPatientPeriod;
  globals_.dBegGl = DateTime::FromCivil(2024, 1, 2).value();
  globals_.strPatNameGl = "O'Neil \"Müller\"";
  globals_.strPatFirstnameGl = "Иван";
  globals_.dPatBirthdayGl = DateTime::FromCivil(1960, 2, 1).value();
  SaveSettings(globals_, ini_);
  EXPECT_EQ(ini_.ReadString(log_, "Birth", globals_.IniFileGl), "19600201");
  EXPECT_EQ(ini_.ReadString(log_, "DateEnd", globals_.IniFileGl), "");

  core::Globals later = folder_.NewGlobals();
  LoadSettings(later, ini_);
  EXPECT_FALSE(later.OptBigIcons);
  EXPECT_TRUE(later.OptTbrVisible);
  EXPECT_FALSE(later.UpdateOnActivation);
  EXPECT_EQ(later.strDataFileGl, log_);
  EXPECT_EQ(later.SortSelectionGl, SelectionKind::kPatientPeriod);
  EXPECT_EQ(later.dBegGl, globals_.dBegGl);
  EXPECT_FALSE(later.dEndGl.IsSet());
  EXPECT_EQ(later.strPatNameGl, globals_.strPatNameGl);
  EXPECT_EQ(later.strPatFirstnameGl, "Иван");
  EXPECT_EQ(later.dPatBirthdayGl, globals_.dPatBirthdayGl);
}

TEST_F(Settings, ForgetALogThatIsGone) {
  Holds("[User]\nDataFile=" + log_ + "\n[" + log_ + "]\nSortSelectionGl=1\nDateBeg=20240102\n");
  Load();
  EXPECT_EQ(globals_.SortSelectionGl, SelectionKind::kPeriod);
  std::filesystem::remove(platform::ToPath(log_));
  core::Globals later = folder_.NewGlobals();
  LoadSettings(later, ini_);
  EXPECT_EQ(later.strDataFileGl, folder_.Data("Varnlog.mdb"));
  EXPECT_EQ(later.SortSelectionGl, SelectionKind::kAll);
  EXPECT_FALSE(later.dBegGl.IsSet());
}

TEST_F(Settings, FindALogNamedFromTheProgramFolder) {
  Holds("[User]\nDataFile=..\\Daten\\Log [alt].mdb\n");
  Load();
  EXPECT_TRUE(std::filesystem::equivalent(platform::ToPath(globals_.strDataFileGl), platform::ToPath(log_)))
      << globals_.strDataFileGl;
}

TEST_F(Settings, ReadDatesOfEveryForm) {
  const Table<const char*, const char*> rows = {{"20240102", "2024-01-02"},
                                                {"02.01.2024", "2024-01-02"},
                                                {"2.1.2099", "2099-01-02"},
                                                {"2024-01-02", "2024-01-02"},
                                                {"30.02.2024", "1899-12-30"},
                                                {"gestern", "1899-12-30"},
                                                {"", "1899-12-30"}};
  for (const auto& [text, expected] : rows) {
    Holds("[User]\nDataFile=" + log_ + "\n[" + log_ + "]\nBirth=" + text + "\n");
    Load();
    EXPECT_EQ(globals_.dPatBirthdayGl.ToIso().substr(0, 10), expected) << text;
  }
}

TEST_F(Settings, TakeAnUnknownSelectionForAll) {
  for (const char* kind : {"9", "-1", "32767", "99999", "x"}) {
    globals_.SortSelectionGl = SelectionKind::kPatient;
    Holds("[User]\nDataFile=" + log_ + "\n[" + log_ + "]\nSortSelectionGl=" + kind + "\n");
    Load();
    EXPECT_EQ(globals_.SortSelectionGl, SelectionKind::kAll) << kind;
  }
}

TEST_F(Settings, OfTheSuiteStandOneFolderUp) {
  test::WriteFile(folder_.Suite() / "kalvero.ini",
                  "[INSTALL]\nSite=Praxis Dr. M\xFCller\n[Config]\nSchemeUS=1\n");
  test::WriteFile(folder_.Suite() / "fotavex.ini", "[XRaysIO]\nkV=70\nmA=8 mA\n");
  ReadHostSettings(globals_, ini_);
  EXPECT_EQ(globals_.SiteGl, "Praxis Dr. Müller");
  EXPECT_EQ(globals_.kVGl, 70);
  EXPECT_EQ(globals_.mAGl, 8);
  const HostToothScheme scheme(globals_, ini_);
  EXPECT_TRUE(scheme.SchemeUS());
  test::WriteFile(folder_.Suite() / "kalvero.ini", "[Config]\nSchemeUS=0\n");
  EXPECT_FALSE(scheme.SchemeUS()) << "asked again every time";
  std::filesystem::remove(folder_.Suite() / "kalvero.ini");
  std::filesystem::remove(folder_.Suite() / "fotavex.ini");
  ReadHostSettings(globals_, ini_);
  EXPECT_EQ(globals_.SiteGl, "");
  EXPECT_EQ(globals_.kVGl, 0);
  EXPECT_FALSE(scheme.SchemeUS());
}

TEST(RememberedSelection, FallsBackToAllWhenItIsIncomplete) {
  const DateTime day = DateTime::FromCivil(2024, 1, 2).value();
  const Table<int, bool, bool, bool> rows = {
      {0, false, false, true},  {1, false, true, false}, {1, true, false, true},  {2, true, false, false},
      {2, false, true, true},   {3, true, false, false}, {3, false, true, false}, {3, true, true, true},
      {4, false, false, false}, {8, true, false, true}};
  for (const auto& [kind, period, patient, kept] : rows) {
    core::Globals globals;
    globals.SortSelectionGl = static_cast<SelectionKind>(kind);
    if (period) globals.dBegGl = globals.dEndGl = day;
    if (patient) {
      globals.strPatNameGl = globals.strPatFirstnameGl = "x";
      globals.dPatBirthdayGl = day;
    }
    CheckRememberedSelection(globals);
    EXPECT_EQ(static_cast<int>(globals.SortSelectionGl), kept ? kind : 0) << kind << period << patient;
  }
  core::Globals globals;
  globals.SortSelectionGl = SelectionKind::kPatient;
  globals.strPatNameGl = "x";
  globals.dPatBirthdayGl = day;
  CheckRememberedSelection(globals);
  EXPECT_EQ(globals.SortSelectionGl, SelectionKind::kAll) << "no first name";
}

}  // namespace
}  // namespace varnlog::start
