#include "db/dao/storage/Workgroup.h"
#include "tests/db/dao/EngineFixture.h"

namespace varnlog::dao {

namespace {

class DBEngineTest : public EngineTest {};

TEST_F(DBEngineTest, AWorkspaceNeedsAWorkgroupFileAndAnAccount) {
  const auto creating = [&](const std::string& user, const std::string& password) {
    return ErrorOf([&] { static_cast<void>(engine_.CreateWorkspace("MyWs", user, password)); });
  };
  EXPECT_EQ(creating("Admin", ""), kNone);
  EXPECT_EQ(creating("ADMIN", ""), kNone);
  EXPECT_EQ(creating("Admin", "x"), kBadAccount);
  EXPECT_EQ(creating("Nobody", ""), kBadAccount);
  EXPECT_EQ(creating("Admin' OR '1'='1", ""), kBadAccount);
  const auto workgroup = Open(engine_.SystemDB());
  workgroup->Execute("INSERT INTO Accounts VALUES ('Praxis', 'salt', '" + PasswordHash("salt", "geheim") +
                     "')");
  EXPECT_EQ(creating("praxis", "geheim"), kNone);
  EXPECT_EQ(creating("praxis", "Geheim"), kBadAccount);
  EXPECT_EQ(creating("praxis", ""), kBadAccount);
  folder_.Holding("letter.txt", "no database");
  for (const std::string& file : {std::string(), Path("missing.mdw"), Path("letter.txt"), MakeLog()}) {
    engine_.SetSystemDB(file);
    EXPECT_EQ(creating("Admin", ""), kWorkgroupFileMissing) << file;
  }
}

TEST_F(DBEngineTest, FindsAppendedWorkspacesByName) {
  const auto appended = engine_.CreateWorkspace("MyWs", "Admin", "");
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(engine_.Workspaces("MyWs")); }), kItemNotFound);
  engine_.AppendWorkspace(appended);
  EXPECT_EQ(engine_.Workspaces("myws"), appended);
  engine_.RemoveWorkspace(appended);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(engine_.Workspaces("MyWs")); }), kItemNotFound);
}

TEST_F(DBEngineTest, CountsReadsWritesAndLocks) {
  const auto log = Open(MakeLog());
  for (const auto statistic :
       {EngineStatistic::kDiskReads, EngineStatistic::kDiskWrites, EngineStatistic::kCacheReads,
        EngineStatistic::kLocksPlaced, EngineStatistic::kLocksReleased}) {
    engine_.ISAMStats(statistic, true);
    EXPECT_EQ(engine_.ISAMStats(statistic), 0) << static_cast<int>(statistic);
    FillLog(*workspace_, *log, 20);
    const auto counted = engine_.ISAMStats(statistic);
    EXPECT_GT(counted, 0) << static_cast<int>(statistic);
    log->Execute("SELECT 1");
    EXPECT_EQ(engine_.ISAMStats(statistic, true), counted) << "resetting returns the count";
  }
  EXPECT_EQ(engine_.ISAMStats(EngineStatistic::kReadAheadCacheReads), 0);
}

TEST_F(DBEngineTest, ALargerBufferReadsLessFromTheDisk) {
  const auto log = Open(MakeLog());
  FillLog(*workspace_, *log, 30000);
  const auto readsOfTwoPasses = [&](std::int32_t kibibytes) {
    engine_.SetOption(EngineOption::kMaxBufferSize, kibibytes);
    engine_.Idle(true);
    engine_.ISAMStats(EngineStatistic::kDiskReads, true);
    for (int pass = 0; pass < 2; ++pass)
      static_cast<void>(log->OpenRecordset("SELECT * FROM TXray", RecordsetType::kSnapshot));
    return engine_.ISAMStats(EngineStatistic::kDiskReads);
  };
  const auto small = readsOfTwoPasses(256);
  const auto large = readsOfTwoPasses(32768);
  EXPECT_LT(large, small * 3 / 4);
}

}  // namespace
}  // namespace varnlog::dao
