#include <gtest/gtest.h>

#include "db/modCommon.h"
#include "start/StartUp.h"
#include "start/modINIFile.h"
#include "tests/Paths.h"
#include "tests/start/AppFixture.h"
#include "tests/support/FakeTexts.h"
#include "tests/support/Table.h"

namespace varnlog::start {
namespace {

namespace fs = std::filesystem;

class StartUp : public testing::Test {
 protected:
  void SetUp() override {
    folder_.InstallProgram();
    globals_.strDataFileGl = folder_.Data("Varnlog.mdb");
    ASSERT_TRUE(OpenLogWorkspace(globals_));
  }
  ~StartUp() override { globals_.LogEngineGl.reset(); }

  bool Open(const std::string& file, bool readOnly = false) {
    return OpenAndCheckDataFile(globals_, services_, file, readOnly) == Opened::kYes;
  }
  [[nodiscard]] bool IsOpen() const { return globals_.LogEngineGl->Database() != nullptr; }

  /// A log file to which statements of the storage's own language were applied.
  std::string LogWith(const std::string& name, std::initializer_list<const char*> statements) {
    std::string file = folder_.Data(name);
    fs::copy_file(folder_.Program() / "varnlog.md0", platform::ToPath(file));
    dao::DBEngine engine;
    engine.SetSystemDB((folder_.Program() / "system.mdw").string());
    const auto database = engine.CreateWorkspace("x", "Admin", "")->OpenDatabase(file, true, false);
    for (const char* statement : statements) database->Execute(statement);
    database->Close();
    return file;
  }
  std::string OldLog() {
    return LogWith("Alt.mdb", {"DROP TRIGGER rXrayChange", "ALTER TABLE TXray DROP COLUMN tXraySDose",
                               "ALTER TABLE TXray DROP COLUMN tXrayBEdDose",
                               "UPDATE TConfig SET tCfgSSet = '1.0' WHERE tCfgSKey = 'DBVersion'",
                               "INSERT INTO TXray (tXraySName) VALUES ('Muster')"});
  }

  test::SuiteFolder folder_;
  modINIFile ini_;
  varnlog::test::FakeTexts texts_{{}, " $strFile$ $strDataFileGl$"};
  test::Listener user_;
  platform::SystemClock clock_;
  core::Globals globals_ = folder_.NewGlobals();
  Services services_{ini_, texts_, user_, clock_};
};

TEST_F(StartUp, InstallsAnEmptyLogOnce) {
  const std::string journal = globals_.strDataFileGl + "-journal";
  std::ofstream(platform::ToPath(journal)) << "of a log that was moved away";
  EXPECT_TRUE(InstallDataFile(globals_, services_));
  EXPECT_TRUE(fs::exists(platform::ToPath(journal + ".aside")) && !fs::exists(platform::ToPath(journal)));
  ASSERT_TRUE(Open(globals_.strDataFileGl)) << user_.TakeKeys();
  EXPECT_EQ(globals_.DBVersionGl, "1.1");
  EXPECT_FALSE(globals_.ReadOnlyGl);
  EXPECT_TRUE(SetConfigValue(globals_, "ReadOnly", "1"));
  globals_.LogEngineGl->CloseDBInWorkspace();
  EXPECT_TRUE(InstallDataFile(globals_, services_));
  ASSERT_TRUE(Open(globals_.strDataFileGl));
  EXPECT_TRUE(globals_.ReadOnlyGl) << "the log that was there stays";
  EXPECT_EQ(user_.TakeKeys(), "");
}

TEST_F(StartUp, SaysThatALogCannotBeInstalled) {
  globals_.strDataFileGl = folder_.Data("fehlt/Varnlog.mdb");
  EXPECT_FALSE(InstallDataFile(globals_, services_));
  ASSERT_EQ(user_.messages.size(), 1U);
  EXPECT_EQ(user_.messages[0].text, "MN_ERR_DBINSTALL $strFile$ " + globals_.strDataFileGl);
  EXPECT_EQ(user_.TakeKeys(), "MN_ERR_DBINSTALL!");
  globals_.strDataFileGl = folder_.Data("Varnlog.mdb");
  fs::remove(folder_.Program() / "varnlog.md0");
  EXPECT_FALSE(InstallDataFile(globals_, services_));
  EXPECT_FALSE(fs::exists(platform::ToPath(globals_.strDataFileGl)));
}

TEST_F(StartUp, KnowsAndChangesConfigurationKeysThatExist) {
  EXPECT_EQ(GetConfigValue(globals_, "DBVersion"), "") << "no log is open";
  EXPECT_FALSE(SetConfigValue(globals_, "DBVersion", "2"));
  InstallDataFile(globals_, services_);
  ASSERT_TRUE(Open(globals_.strDataFileGl));
  EXPECT_EQ(GetConfigValue(globals_, "DBVersion"), "1.1");
  EXPECT_EQ(GetConfigValue(globals_, "Unbekannt"), "");
  EXPECT_EQ(GetConfigValue(globals_, "'"), "");
  EXPECT_FALSE(SetConfigValue(globals_, "Unbekannt", "1"));
  EXPECT_EQ(GetConfigValue(globals_, "Unbekannt"), "") << "no key is ever made";
  EXPECT_FALSE(SetConfigValue(globals_, "'", "1"));
}

TEST_F(StartUp, RefusesWhatIsNoLog) {
  test::WriteFile(platform::ToPath(folder_.Data("text.mdb")),
                  "This is only a text, long enough to have a header. " + std::string(2000, '.'));
  const Table<std::string, std::string> rows = {
      {folder_.Data("fehlt.mdb"), "MN_ERR_DBOPEN!"},
      {folder_.Data(""), "MN_ERR_DBOPEN!"},
      {LogWith("ohne Config.mdb", {"DROP TABLE TConfig"}), "MN_ERR_DBNOTVALID!"},
      {LogWith("ohne Xray.mdb", {"DROP TABLE TXray"}), "MN_ERR_DBNOTVALID!"},
      {LogWith("ohne Version.mdb", {"DELETE FROM TConfig"}), "MN_ERR_CONFIG!"},
      {LogWith("1.2.mdb", {"UPDATE TConfig SET tCfgSSet = '1.2' WHERE tCfgSKey = 'DBVersion'"}),
       "MN_ERR_VERSION!"},
      {LogWith("Blank.mdb", {"UPDATE TConfig SET tCfgSSet = ' 1.1' WHERE tCfgSKey = 'DBVersion'"}),
       "MN_ERR_VERSION!"}};
  globals_.strDataFileGl = "vorher";
  for (const auto& [file, keys] : rows) {
    EXPECT_FALSE(Open(file)) << file;
    EXPECT_EQ(user_.TakeKeys(), keys) << file;
    EXPECT_FALSE(IsOpen()) << file;
    EXPECT_EQ(globals_.strDataFileGl, "vorher");
  }
  // What an unknown format means, and what the engine says about it.
  texts_.texts["GL_ERR_DETAIL"] = "Details: $strDetail$";
  EXPECT_FALSE(Open(folder_.Data("text.mdb")));
  ASSERT_EQ(user_.messages.size(), 1U);
  EXPECT_TRUE(user_.messages[0].text.starts_with("3343: GL_ERR_3343")) << user_.messages[0].text;
  EXPECT_TRUE(user_.messages[0].text.ends_with("Details: " + globals_.LogEngineGl->LastError()))
      << user_.messages[0].text;
  EXPECT_EQ(user_.messages[0].icon, core::MessageIcon::kCritical);
}

TEST_F(StartUp, SaysThatALogIsInUse) {
  const std::string file = LogWith("in Gebrauch.mdb", {});
  dao::DBEngine other;
  other.SetSystemDB((folder_.Program() / "system.mdw").string());
  const auto exclusive = other.CreateWorkspace("x", "Admin", "")->OpenDatabase(file, true, false);
  EXPECT_FALSE(Open(file));
  EXPECT_EQ(user_.messages.at(0).text, "MN_ERR_DBOPENEX " + file + " $strDataFileGl$");
  EXPECT_EQ(user_.TakeKeys(), "MN_ERR_DBOPENEXi");
}

TEST_F(StartUp, UpgradesAnOldLogOnceAndKeepsItsRows) {
  const std::string file = OldLog();
  ASSERT_TRUE(Open(file)) << user_.TakeKeys();
  EXPECT_EQ(globals_.DBVersionGl, "1.1");
  EXPECT_EQ(globals_.strDataFileGl, file);
  const auto rows = globals_.LogEngineGl->Database()->OpenRecordset("SELECT TXray.* FROM TXray");
  ASSERT_FALSE(rows->IsEOF());
  EXPECT_EQ(rows->Fields("tXraySName").Text(), "Muster");
  EXPECT_TRUE(rows->Fields("tXraySDose").IsNull());
  EXPECT_EQ(rows->Fields("tXraySDose").Size(), 32);
  EXPECT_FALSE(rows->Fields("tXrayBEdDose").Boolean());
}

TEST_F(StartUp, FinishesAnUpgradeThatWasInterrupted) {
  const std::string file = OldLog();
  ASSERT_EQ(globals_.LogEngineGl->OpenDBInWorkspace(file, false, false), 0);
  ASSERT_TRUE(globals_.LogEngineGl->AddTextFieldToTable("TXray", "tXraySDose", 32));
  globals_.LogEngineGl->CloseDBInWorkspace();
  EXPECT_TRUE(Open(file));
  EXPECT_EQ(globals_.DBVersionGl, "1.1");
  ASSERT_TRUE(SetConfigValue(globals_, "DBVersion", "1.0"));
  globals_.LogEngineGl->CloseDBInWorkspace();
  EXPECT_TRUE(Open(file)) << "both fields were there, the version was not";
  EXPECT_EQ(GetConfigValue(globals_, "DBVersion"), "1.1");
}

TEST_F(StartUp, LeavesAnOldLogAloneThatMayOnlyBeRead) {
  const std::string file = OldLog();
  const std::string before = test::ReadFile(platform::ToPath(file));
  EXPECT_FALSE(Open(file, true));
  EXPECT_EQ(user_.TakeKeys(), "MN_ERR_VERSION!");
  EXPECT_EQ(test::ReadFile(platform::ToPath(file)), before);
}

TEST_F(StartUp, HasNoWorkspaceWithoutAWorkgroupFile) {
  core::Globals globals = folder_.NewGlobals();
  fs::remove(folder_.Program() / "system.mdw");
  EXPECT_FALSE(OpenLogWorkspace(globals));
  ASSERT_NE(globals.LogEngineGl, nullptr);
  EXPECT_NE(globals.LogEngineGl->OpenDBInWorkspace(folder_.Data("x.mdb"), false, false), 0);
}

class Watcher final : public platform::Launcher {
 public:
  bool Start(const std::vector<std::string>& command) override {
    for (const std::string& word : command) started += word + " ";
    return false;
  }
  std::string started;
};

TEST(ReportComponents, AreRegisteredWhereThatCanBeDone) {
  Watcher watcher;
  RegisterReportComponents(watcher, false);
  EXPECT_EQ(watcher.started, "");
  RegisterReportComponents(watcher, true);
  EXPECT_EQ(watcher.started, "Regsvr32.exe /s CraxDrt.DLL Regsvr32.exe /s CRViewer.DLL ");
}

/// The suite's library gives what "kvfiledb.ini" beside it says.
class HostData : public testing::Test {
 protected:
  void SetUp() override {
    fs::copy_file(fs::path(VARNLOG_SUITE_DIR) / "KVFILEDB.DLL", folder_.Suite() / "KVFILEDB.DLL");
  }
  void TearDown() override { EXPECT_EQ(fs::current_path(), before_) << "whatever the library does"; }
  void Answers(const std::string& lines) const { test::WriteFile(folder_.Suite() / "kvfiledb.ini", lines); }
  [[nodiscard]] std::string Path(const char* language = "D") const {
    return HostDataPath(folder_.Program().string(), language);
  }
  const fs::path before_ = fs::current_path();
  test::SuiteFolder folder_;
};

TEST_F(HostData, IsWhereTheLibrarySaysWithASeparatorBehind) {
  EXPECT_EQ(platform::ToPath(Path()), fs::canonical(folder_.Suite()) / "Data/");
  Answers("Data=/Röntgen/Daten\n");
  EXPECT_EQ(platform::ToPath(Path()), platform::ToPath("/Röntgen/Daten/"));
  Answers("Data=C:\\Daten\\\n");
  EXPECT_EQ(Path(), "C:\\Daten\\");
  Answers("Data=/R\xF6ntgen/\n");
  EXPECT_EQ(Path(), "/Röntgen/");
  Answers("Data=/\xC4\xE0\xED\xED\xFB\xE5/\n");
  EXPECT_EQ(Path("CYR"), "/Данные/");
}

TEST_F(HostData, IsNothingAfterAnyFailure) {
  for (const char* answer : {"OpenResult=1\n", "InfoResult=7\n"}) {
    Answers(answer);
    EXPECT_EQ(Path(), "") << answer;
  }
  Answers("Data=/" + std::string(300, 'x') + "/\n");
  EXPECT_EQ(Path(), "");
  test::WriteFile(folder_.Suite() / "KVFILEDB.DLL", "no library");
  EXPECT_EQ(Path(), "");
  fs::remove(folder_.Suite() / "KVFILEDB.DLL");
  EXPECT_EQ(Path(), "");
  EXPECT_EQ(HostDataPath("/no such folder anywhere", "D"), "");
}

}  // namespace
}  // namespace varnlog::start
