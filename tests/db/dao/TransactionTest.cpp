#include <algorithm>
#include <thread>

#include "tests/db/dao/EngineFixture.h"

namespace varnlog::dao {

namespace {

class TransactionTest : public EngineTest {
 protected:
  TransactionTest() : path_(MakeLog()) {}

  [[nodiscard]] std::int64_t RowCount() { return Open(path_)->OpenRecordset("TXray")->RecordCount(); }
  [[nodiscard]] std::vector<std::string> Findings() { return Open(path_)->Check(); }

  std::string path_;
};

TEST_F(TransactionTest, CommitKeepsAndRollbackUndoes) {
  const auto log = Open(path_);
  FillLog(*workspace_, *log, 5);
  workspace_->BeginTrans();
  AddExposure(*log->OpenRecordset("TXray"), {"Gone", "Soon", Minute(0), Minute(9)});
  workspace_->Rollback();
  EXPECT_EQ(RowCount(), 5);
  workspace_->BeginTrans();
  AddExposure(*log->OpenRecordset("TXray"), {"Stays", "Here", Minute(0), Minute(9)});
  log->Close();
  EXPECT_EQ(RowCount(), 5) << "closing commits nothing";
}

TEST_F(TransactionTest, TransactionsPair) {
  const auto log = Open(path_);
  EXPECT_EQ(ErrorOf([&] { workspace_->CommitTrans(); }), kInvalidTransaction);
  EXPECT_EQ(ErrorOf([&] { workspace_->Rollback(); }), kInvalidTransaction);
  workspace_->BeginTrans();
  EXPECT_EQ(ErrorOf([&] { workspace_->BeginTrans(); }), kInvalidTransaction);
  workspace_->Rollback();
  workspace_->Close();
  EXPECT_EQ(ErrorOf([&] { workspace_->BeginTrans(); }), kObjectInvalid);
}

TEST_F(TransactionTest, OneStationWaitsForTheOther) {
  const auto log = Open(path_);
  auto other = AnotherStation();
  const auto otherLog = other.workspace->OpenDatabase(path_, false, false);
  other.workspace->BeginTrans();
  EXPECT_EQ(ErrorOf([&] { workspace_->BeginTrans(); }), kFileInUse) << "after the lock retry time";
  EXPECT_EQ(ErrorOf([&] {
              AddExposure(*log->OpenRecordset("TXray"), {"A", "B", Minute(0), Minute(1)});
            }),
            kFileInUse);
  engine_.SetOption(EngineOption::kLockDelay, 1000);
  std::thread commits([&] {
    AddExposure(*otherLog->OpenRecordset("TXray"), {"First", "One", Minute(0), Minute(0)});
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    other.workspace->CommitTrans();
  });
  workspace_->BeginTrans();  // waits
  const bool sees = FindExposure(*log->OpenRecordset("TXray"), {"First", "One", Minute(0), Minute(0)});
  workspace_->CommitTrans();
  commits.join();
  EXPECT_TRUE(sees);
}

TEST_F(TransactionTest, ReadersDoNotSeeWhatIsNotCommitted) {
  const auto log = Open(path_);
  const auto other = AnotherStation();
  const auto otherLog = other.workspace->OpenDatabase(path_, false, false);
  workspace_->BeginTrans();
  AddExposure(*log->OpenRecordset("TXray"), {"A", "B", Minute(0), Minute(0)});
  EXPECT_EQ(otherLog->OpenRecordset("TXray")->RecordCount(), 0);
  EXPECT_EQ(log->OpenRecordset("TXray")->RecordCount(), 1);
  workspace_->CommitTrans();
  EXPECT_EQ(otherLog->OpenRecordset("TXray")->RecordCount(), 1);
}

TEST_F(TransactionTest, AFullDiskUndoesAllAndWritesNothingMore) {
  const auto log = Open(path_);
  FillLog(*workspace_, *log, 10);
  log->Execute("PRAGMA max_page_count = 8");  // the storage meets its limit as it would meet the disk's
  workspace_->BeginTrans();
  const auto table = log->OpenRecordset("TXray");
  ErrorNumber failure = kNone;
  for (int i = 0; i < 5000 && failure == kNone; ++i)
    failure = ErrorOf([&] { AddExposure(*table, {"P", std::to_string(i), Minute(0), Minute(100 + i)}); });
  EXPECT_EQ(failure, kNotEnoughDiskSpace);
  EXPECT_EQ(ErrorOf([&] {
              AddExposure(*table, {"P", "X", Minute(0), Minute(1)});
            }),
            kInvalidTransaction)
      << "not one row outside the transaction that was undone";
  EXPECT_EQ(ErrorOf([&] { workspace_->CommitTrans(); }), kInvalidTransaction);
  log->Close();
  EXPECT_EQ(RowCount(), 10);
  EXPECT_TRUE(Findings().empty());
}

// A long run writes several rows at once; that some wait must never show.
TEST_F(TransactionTest, RowsThatWaitAreSeenByEveryReaderAndAreCommitted) {
  const auto log = Open(path_);
  const auto table = log->OpenRecordset("TXray");
  workspace_->BeginTrans();
  {
    const RulesSuspension suspension = log->SuspendRules();
    for (int i = 1; i <= 100; ++i) {
      AddExposure(*table, {"P" + std::to_string(i), "A", Minute(0), Minute(i)});
      if (i % 37 != 0) continue;
      const auto rows =
          log->OpenRecordset("SELECT tXraySName FROM TXray WHERE tXrayCulIntIDPk >= " + std::to_string(i));
      ASSERT_EQ(rows->Fields(0).Text(), "P" + std::to_string(i));
      rows->Edit();
      rows->Fields(0).SetText("changed");
      rows->Update();
    }
  }
  workspace_->CommitTrans();
  const auto rows = Open(path_)->OpenRecordset("SELECT TXray.* FROM TXray ORDER BY tXrayCulIntIDPk");
  for (int i = 1; i <= 100; ++i, rows->MoveNext()) {
    EXPECT_EQ(rows->Fields("tXrayCulIntIDPk").Number(), i);
    EXPECT_EQ(rows->Fields("tXraySName").Text(), i % 37 == 0 ? "changed" : "P" + std::to_string(i));
    EXPECT_EQ(rows->Fields("tXrayTs").Date(), Minute(i));
  }
  EXPECT_TRUE(rows->IsEOF());
}

TEST_F(TransactionTest, ATransactionThatLostWaitingRowsIsNotCommittedWhoeverWasTold) {
  const auto log = Open(path_);
  FillLog(*workspace_, *log, 10);
  log->Execute("CREATE UNIQUE INDEX iRefuses ON TXray (tXrayTs)");
  const std::vector<std::string> rules{
      "CREATE TRIGGER tRefuses BEFORE INSERT ON TXray WHEN NEW.tXraySName = 'No' "
      "BEGIN SELECT RAISE(ABORT, 'no'); END"};
  log->SetRules(rules);
  ASSERT_TRUE(log->ObeyRules(rules));
  const auto table = log->OpenRecordset("TXray");
  for (const bool isReadBetween : {false, true}) {
    workspace_->BeginTrans();
    {
      const RulesSuspension suspension = log->SuspendRules();
      for (const int minute : {100, 101, 101, 102})
        EXPECT_EQ(ErrorOf([&] { AddExposure(*table, {"P", "A", Minute(0), Minute(minute)}); }), kNone);
      const ErrorNumber read = ErrorOf([&] {
        if (isReadBetween) static_cast<void>(table->RecordCount());
      });
      EXPECT_EQ(read, isReadBetween ? kDuplicateKey : kNone);
      for (int minute = 103; minute < 130; ++minute)
        static_cast<void>(ErrorOf([&] { AddExposure(*table, {"P", "A", Minute(0), Minute(minute)}); }));
    }
    EXPECT_EQ(ErrorOf([&] { workspace_->CommitTrans(); }), kInvalidTransaction);
    EXPECT_EQ(RowCount(), 10);
  }
  workspace_->BeginTrans();
  {
    RulesSuspension suspension = log->SuspendRules();
    for (const int minute : {100, 101, 101}) AddExposure(*table, {"No", "A", Minute(0), Minute(minute)});
    EXPECT_EQ(ErrorOf([&] { suspension.End(); }), kDuplicateKey);
  }
  workspace_->Rollback();
  EXPECT_EQ(ErrorOf([&] { AddExposure(*table, {"No", "A", Minute(0), Minute(100)}); }), kRuleViolated);
  AddExposure(*table, {"P", "A", Minute(0), Minute(100)});
  EXPECT_EQ(RowCount(), 11) << "and the next one goes on";
}

TEST_F(TransactionTest, AReadOnlyDatabaseDoesNotHinderATransaction) {
  const auto log = Open(path_);
  const auto texts = Open(MakeLog("texts.mdb"), true);
  workspace_->BeginTrans();
  AddExposure(*log->OpenRecordset("TXray"), {"A", "B", Minute(0), Minute(0)});
  workspace_->CommitTrans();
  EXPECT_EQ(RowCount(), 1);
}

}  // namespace
}  // namespace varnlog::dao
