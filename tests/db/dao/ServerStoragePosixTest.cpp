#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "db/dao/TableScan.h"
#include "db/dao/postgres/LinkFile.h"
#include "db/dao/postgres/ServerDialect.h"
#include "db/dao/sql/LikePattern.h"
#include "tests/db/dao/EngineFixture.h"
#include "tests/support/AnswerThief.h"
#include "tests/support/PrivateServer.h"

namespace varnlog::dao {
namespace {

using ::testing::ElementsAre;
using Texts = std::vector<std::string>;

/// A log on a server, and one in a file to compare with.
class ServerStorageTest : public EngineTest {
 protected:
  ServerStorageTest() {
    server_.MakeLog(folder_ / "link");
    log_ = workspace_->OpenDatabase(Path("link"), false, false);
  }

  static Texts Names(Database& log, const std::string& rest) {
    Texts names;
    const auto rows = log.OpenRecordset("SELECT TXray.tXraySName FROM TXray " + rest);
    for (; !rows->IsEOF(); rows->MoveNext()) names.emplace_back(rows->Fields(0).Text());
    return names;
  }
  std::string Value(const std::string& key) {
    const auto row = log_->OpenRecordset("SELECT tCfgSSet FROM TConfig WHERE tCfgSKey = '" + key + "'");
    return row->IsEOF() ? "" : std::string(row->Fields(0).Text());
  }

  test::PrivateServer& server_ = test::PrivateServer::Instance();
  std::shared_ptr<Database> log_;
};

// Names as practices have them, and some that look alike.
const Texts kNames = {"Weiß",   "WEISS",     "weiss",  "Weis",   "Müller", "MÜLLER",   "Mueller",  "Muller",
                      "Möller", "O'Neil",    "o'neil", "Şahin",  "Sahin",  "Ångström", "Angstrom", "é",
                      "e",      "E\xCC\x81", "Žižek",  "Иванов", "иванов", "Йод",      "Иод",      "a-b",
                      "ab",     "a b",       "",       "\"x\"",  "\\x",    "100%",     "_",        "STRAẞE"};

TEST_F(ServerStorageTest, OrdersAndComparesTextsAsAFileDoes) {
  const auto file = engine_.CreateDatabase(Path("file.mdb"), "", 0);
  file->Execute(test::ReadFile(std::filesystem::path(VARNLOG_SOURCE_DIR) / "resources" / "log.sql"));
  const auto inFile = workspace_->OpenDatabase(Path("file.mdb"), false, false);
  for (Database* log : {log_.get(), inFile.get()}) {
    workspace_->BeginTrans();
    const auto table = log->OpenRecordset("TXray");
    for (const std::string& name : kNames) AddExposure(*table, {name, name, Minute(0), Minute(1)});
    workspace_->CommitTrans();
  }
  for (const char* rest :
       {"ORDER BY tXraySName", "ORDER BY tXraySName DESC, tXraySFirstname DESC", "WHERE tXraySName = 'WEISS'",
        "WHERE tXraySName > 'müller' ORDER BY tXraySName", "WHERE tXraySName In ('é', 'Иванов')",
        "WHERE tXraySName Between 'm' And 'n'", "WHERE tXraySName & ', ' & tXraySFirstname Like 'mü*'",
        "WHERE tXraySName Like '*[a-cß]*' AND NOT tXrayBEdDr", "WHERE tXraySName Like '?#*'",
        "WHERE tXraySName Like 'stra?se*'", "WHERE tXraySName Like '*[!a-z]*'"})
    EXPECT_EQ(Names(*log_, rest), Names(*inFile, rest)) << rest;
}

// Names that are equal but for their spelling, some of them without a first name or birth date, and then so
// many others that the server no longer looks for them one by one.
TEST_F(ServerStorageTest, FindsTheDifferentPatientsAsAFileDoes) {
  const auto file = engine_.CreateDatabase(Path("file.mdb"), "", 0);
  file->Execute(test::ReadFile(std::filesystem::path(VARNLOG_SOURCE_DIR) / "resources" / "log.sql"));
  const auto inFile = workspace_->OpenDatabase(Path("file.mdb"), false, false);
  const auto rowsOf = [](Database& log, const std::string& select) {
    Texts found;
    for (const auto rows = log.OpenRecordset(select); !rows->IsEOF(); rows->MoveNext()) {
      std::string row;
      for (std::size_t i = 0; i < rows->FieldCount(); ++i)
        row += (rows->Fields(i).IsNull() ? "-" : std::string(rows->Fields(i).Text())) + "|";
      found.push_back(row);
    }
    return found;
  };
  const auto add = [](Recordset& table, const std::string& name, int with) {
    table.AddNew();
    if (with % 5 != 4) table.Fields("tXraySName").SetText(name);
    if (with % 3 != 2) table.Fields("tXraySFirstname").SetText(name);
    if (with % 4 != 3) table.Fields("tXrayDBirthday").SetDate(Minute(with % 2));
    table.Fields("tXrayTs").SetDate(Minute(with));
    table.Update();
  };
  const auto compare = [&](const std::string& rest) {
    const std::string select =
        "SELECT DISTINCT tXraySName, tXraySFirstname, tXrayDBirthday, [tXraySName] & ', ' & "
        "[tXraySFirstname] AS FullName FROM TXray " +
        rest;
    const Texts wanted = rowsOf(*inFile, select);
    EXPECT_EQ(rowsOf(*log_, select), wanted) << rest;
    return wanted.size();
  };
  for (const int others : {0, 10'500}) {
    for (Database* log : {log_.get(), inFile.get()}) {
      workspace_->BeginTrans();
      const auto table = log->OpenRecordset("TXray");
      for (int with = 0; with < 12; ++with)
        for (const std::string& name : kNames) add(*table, name, with);
      for (int i = 0; i < others; ++i) add(*table, "Patient " + std::to_string(i), 0);
      workspace_->CommitTrans();
    }
    EXPECT_GT(compare(""), 100U);
    EXPECT_GT(compare("WHERE [tXraySName] & ', ' & [tXraySFirstname] Like 'mü*'"), 5U);
    EXPECT_GT(compare("WHERE tXraySFirstname Like '*i*' ORDER BY tXrayDBirthday DESC, tXraySName"), 5U);
    EXPECT_EQ(compare("WHERE tXraySName Like 'nobody*'"), 0U);
    EXPECT_GT(compare("WHERE tXraySName = 'weiss' AND tXrayDBirthday = #3/1/2024 8:01:00#"), 0U);
  }
}

TEST_F(ServerStorageTest, RefusesWhatAServerOrASchemaCannotBe) {
  const auto errorOf = [this](const std::string& lines) {
    std::ofstream(folder_ / "other") << lines;
    return ErrorOf([this] { (void)workspace_->OpenDatabase(Path("other"), false, false); });
  };
  const std::string link = server_.Link("nothing \"there\"");
  EXPECT_EQ(errorOf(link), kUnrecognisedFormat);
  EXPECT_EQ(errorOf("[VarnlogServer]\nHost=/nowhere\n"), kServerUnreachable);
  EXPECT_EQ(errorOf("[VarnlogServer]\nHost=nobody.invalid\n"), kServerUnreachable);
  EXPECT_EQ(errorOf(link + "Service=unknown\n"), kServerUnreachable);
  EXPECT_EQ(errorOf("[VarnlogServer]\nHost=" + link), kUnrecognisedFormat);
  server_.Sql("DROP ROLE IF EXISTS stranger; CREATE ROLE stranger LOGIN");
  std::string stranger = test::ReadFile(folder_ / "link");
  stranger.replace(stranger.find("User=postgres"), 13, "User=stranger");
  EXPECT_EQ(errorOf(stranger), kNoPermission);
  stranger.replace(stranger.find("User=stranger"), 13, "User=nobody99");
  EXPECT_EQ(errorOf(stranger), kBadAccount);
}

TEST_F(ServerStorageTest, GoesOnWithANewConnectionAndKeepsNothingOfALostTransaction) {
  const auto all = log_->OpenRecordset("SELECT TXray.* FROM TXray", RecordsetType::kDynaset);
  FillLog(*workspace_, *log_, 5);
  server_.Stop();
  EXPECT_EQ(ErrorOf([&] { (void)Names(*log_, ""); }), kServerUnreachable);
  server_.Start();
  std::this_thread::sleep_for(std::chrono::milliseconds(2100));
  EXPECT_EQ(Names(*log_, "").size(), 5U);

  workspace_->BeginTrans();
  AddExposure(*log_->OpenRecordset("TXray"), {"Lost", "", Minute(0), Minute(9)});
  server_.Stop();
  server_.Start();
  EXPECT_EQ(ErrorOf([&] { engine_.Idle(true); }), kConnectionLost);
  EXPECT_EQ(ErrorOf([&] { workspace_->CommitTrans(); }), kInvalidTransaction);
  EXPECT_EQ(Names(*log_, "").size(), 5U);
  EXPECT_EQ(log_->UnusedIds("TXray"), std::vector<IdRange>());
  FillLog(*workspace_, *log_, 1);
  EXPECT_EQ(log_->Greatest("TXray", "tXrayCulIntIDPk"), 6);
}

// The server ends the connection while it commits, before and after the change is kept.
TEST_F(ServerStorageTest, LooksACommitUpWhoseAnswerWasLost) {
  const std::string schema = ReadLinkFile(Path("link")).schema;
  const auto commit = [&](const std::string& key) {
    workspace_->BeginTrans();
    const auto table = log_->OpenRecordset("TConfig", RecordsetType::kTable);
    table->AddNew();
    table->Fields("tCfgSKey").SetText(key);
    table->Fields("tCfgSSet").SetText("x");
    table->Update();
    return ErrorOf([&] { workspace_->CommitTrans(); });
  };
  server_.Sql("CREATE FUNCTION " + schema +
              ".fail() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN "
              "PERFORM pg_terminate_backend(pg_backend_pid()); RETURN NULL; END $$; "
              "CREATE CONSTRAINT TRIGGER fail AFTER INSERT ON " +
              schema +
              ".\"TConfig\" DEFERRABLE INITIALLY "
              "DEFERRED FOR EACH ROW EXECUTE FUNCTION " +
              schema + ".fail()");
  EXPECT_EQ(commit("undone"), kConnectionLost);
  server_.Sql("DROP TRIGGER fail ON " + schema + ".\"TConfig\"");
  EXPECT_EQ(Value("undone"), "");
  EXPECT_EQ(commit("kept"), kNone);
  EXPECT_EQ(Value("kept"), "x");
}

TEST_F(ServerStorageTest, DoesNotRepeatACommitThatWasKeptWhileItsAnswerWasLost) {
  log_->Close();
  test::AnswerThief thief(server_.Folder());
  std::string link = test::ReadFile(folder_ / "link");
  link.replace(link.find(server_.Folder()), server_.Folder().size(), thief.Folder());
  test::WriteFile(folder_ / "through", link);
  const auto log = Open(Path("through"));
  thief.StealsAnswerTo("COMMIT");
  EXPECT_EQ(ErrorOf([&] { FillLog(*workspace_, *log, 3); }), kNone);
  EXPECT_TRUE(thief.HasStolen());
  EXPECT_EQ(Names(*log, ""), Texts({"P0", "P1", "P2"}));
  EXPECT_EQ(log->Greatest("TXray", "tXrayCulIntIDPk"), 3);
}

TEST_F(ServerStorageTest, LetsOneStationWriteAtATimeAndTellsOfChanges) {
  FillLog(*workspace_, *log_, 3);
  const Station other = AnotherStation();
  const auto theirs = other.workspace->OpenDatabase(Path("link"), false, false);
  const auto mine = log_->OpenRecordset("SELECT TConfig.* FROM TConfig", RecordsetType::kDynaset);
  (void)mine->Fields(1).Text();

  other.workspace->BeginTrans();
  EXPECT_EQ(ErrorOf([&] { workspace_->BeginTrans(); }), kFileInUse);
  const auto row = theirs->OpenRecordset("SELECT TConfig.* FROM TConfig", RecordsetType::kDynaset);
  row->Edit();
  row->Fields(1).SetText("theirs");
  row->Update();
  other.workspace->CommitTrans();

  mine->Edit();
  mine->Fields(1).SetText("mine");
  EXPECT_EQ(ErrorOf([&] { mine->Update(); }), kDataChanged);
  mine->CancelUpdate();
  EXPECT_EQ(mine->Fields(1).Text(), "theirs");
  server_.Sql("DELETE FROM " + ReadLinkFile(Path("link")).schema + ".\"TConfig\"");
  EXPECT_EQ(ErrorOf([&] { mine->Edit(); }), kRecordDeleted);
}

TEST_F(ServerStorageTest, RefusesAChangeThatIsNotInTheHistory) {
  FillLog(*workspace_, *log_, 1);
  const auto rows = log_->OpenRecordset("TXray");
  rows->Edit();
  rows->Fields("tXraySDr").SetText("x");
  EXPECT_EQ(ErrorOf([&] { rows->Update(); }), kRuleViolated);
  EXPECT_TRUE(log_->Check().empty());
}

}  // namespace
}  // namespace varnlog::dao
