#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>

#include <gtest/gtest.h>

#include "db/CJetEngine.h"
#include "platform/Files.h"
#include "tests/support/LogFolder.h"
#include "tests/support/Table.h"

namespace varnlog::db {

namespace fs = std::filesystem;

namespace {

// An engine that remembers what it was asked for.
class WatchedEngine final : public dao::DBEngine {
 public:
  std::shared_ptr<dao::Database> CreateDatabase(const std::string& path, std::string_view locale,
                                                int options) override {
    locale_ = locale;
    options_ = options;
    return DBEngine::CreateDatabase(path, locale, options);
  }
  void CompactDatabase(const std::string& source, const std::string& target, int options,
                       const dao::MaintenanceProgress& progress) override {
    options_ = options;
    DBEngine::CompactDatabase(source, target, options, progress);
  }
  void CompactInPlace(const std::string& path, const std::string& temporary, int options,
                      const dao::MaintenanceProgress& progress) override {
    options_ = options;
    temporary_ = temporary;
    DBEngine::CompactInPlace(path, temporary, options, progress);
  }
  std::int64_t ISAMStats(dao::EngineStatistic statistic, bool reset) override {
    statistics_.emplace_back(static_cast<int>(statistic), reset);
    return 100 + static_cast<int>(statistic);
  }
  void SetOption(dao::EngineOption option, const std::variant<std::int32_t, std::string>& value) override {
    set_[static_cast<int>(option)] = value;
    DBEngine::SetOption(option, value);
  }

  std::string locale_;
  std::string temporary_;
  int options_ = -1;
  std::vector<std::pair<int, bool>> statistics_;
  std::map<int, std::variant<std::int32_t, std::string>> set_;
};

class CJetEngineTest : public testing::Test, protected test::LogFolder {
 protected:
  void OpenWorkspace() {
    jet_.SetWorkgroupPath(Path("system.mdw"));
    jet_.OpenWorkspace("MyWs", "Admin", "");
    ASSERT_EQ(jet_.WorkspaceName(), "MyWs");
  }
  std::string MakeDatabase(const std::string& name) {
    auto database = engine_.CreateDatabase(Path(name), "", 0);
    database->Execute(
        "CREATE TABLE TXray (tXraySName TEXT(32) COLLATE JET); INSERT INTO TXray VALUES ('Weiß')");
    database->Close();
    return Path(name);
  }
  [[nodiscard]] std::int32_t SizeOf(const std::string& path) const {
    return static_cast<std::int32_t>(fs::file_size(platform::ToPath(path)));
  }

  WatchedEngine watched_;
  CJetEngine jet_{watched_};
};

TEST_F(CJetEngineTest, AFailedWorkspaceHasNoNameButAnErrorText) {
  jet_.SetWorkgroupPath(Path("missing.mdw"));
  jet_.OpenWorkspace("MyWs", "Admin", "");
  EXPECT_EQ(jet_.WorkspaceName(), "");
  const std::string missing = jet_.LastError();
  EXPECT_NE(missing, "");
  jet_.SetWorkgroupPath(Path("system.mdw"));
  jet_.OpenWorkspace("MyWs", "Admin", "wrong");
  EXPECT_EQ(jet_.WorkspaceName(), "");
  EXPECT_NE(jet_.LastError(), missing);
  const std::string wrong = jet_.LastError();
  OpenWorkspace();
  EXPECT_EQ(jet_.LastError(), wrong) << "a success clears nothing";
  jet_.CloseWorkspace();
  EXPECT_EQ(jet_.WorkspaceName(), "");
}

TEST_F(CJetEngineTest, OpeningReturnsTheNumberOfTheError) {
  OpenWorkspace();
  const std::string path = MakeDatabase("Log.mdb");
  std::ofstream(folder_ / "letter.mdb") << "no database";
  EXPECT_EQ(jet_.OpenDBInWorkspace(path, false, false), 0);
  EXPECT_NE(jet_.Database(), nullptr);
  EXPECT_EQ(jet_.OpenDBInWorkspace(Path("missing.mdb"), false, false), 3024);
  EXPECT_EQ(jet_.OpenDBInWorkspace(Path("letter.mdb"), false, false), 3343);
  EXPECT_NE(jet_.LastError().find("letter.mdb"), std::string::npos);
  EXPECT_EQ(jet_.Database()->Name(), path) << "the open database stays";
  EXPECT_EQ(jet_.OpenDBInWorkspace(path, false, true, "geheim"), 0);
  EXPECT_TRUE(jet_.Database()->IsReadOnly());
  jet_.CloseDBInWorkspace();
  EXPECT_EQ(jet_.Database(), nullptr);
}

TEST_F(CJetEngineTest, WhatIsMissingIsAFailureThatIsRecorded) {
  const std::vector<std::function<void()>> operations = {
      [&] { jet_.CloseDBInWorkspace(); },
      [&] { jet_.CloseWorkspace(); },
      [&] { EXPECT_FALSE(jet_.TransactionStart()); },
      [&] { EXPECT_FALSE(jet_.TransactionCommit()); },
      [&] { EXPECT_FALSE(jet_.TransactionRollback()); },
      [&] { EXPECT_NE(jet_.OpenDBInWorkspace(Path("x.mdb"), false, false), 0); },
      [&] { EXPECT_FALSE(jet_.AddTextFieldToTable("TXray", "x", 3)); },
      [&] { EXPECT_FALSE(jet_.AddBooleanFieldToTable("TXray", "x")); },
      [&] { EXPECT_EQ(jet_.CompactDatabase(Path("none.mdb")), 0); },
      [&] { EXPECT_EQ(jet_.EncryptDatabase(Path("none.mdb")), 0); },
      [&] { EXPECT_EQ(jet_.CreateDatabase(Path("no/where.mdb"), 0, false), 0); },
      [&] { EXPECT_EQ(jet_.RepairDatabase(Path("none.mdb")), 0); },
  };
  for (std::size_t i = 0; i < operations.size(); ++i) {
    ASSERT_EQ(jet_.LastError().empty(), i == 0);
    jet_.SetDatabase(nullptr);
    operations[i]();
    EXPECT_FALSE(jet_.LastError().empty()) << "operation " << i;
  }
}

TEST_F(CJetEngineTest, CompactingInPlaceGoesByWayOfTheBaseName) {
  for (const auto& [name, temporary] : Table<const char*, const char*>{
           {"Log.mdb", "Log.TMP"}, {"Archive.2024.mdb", "Archive.TMP"}, {"bare", "bare.TMP"}}) {
    const std::string path = MakeDatabase(name);
    EXPECT_EQ(jet_.CompactDatabase(path), 0) << name;
    EXPECT_EQ(watched_.temporary_, Path(temporary));
    EXPECT_EQ(watched_.options_, 0);
    EXPECT_TRUE(fs::exists(platform::ToPath(path))) << name;
    EXPECT_FALSE(fs::exists(folder_ / temporary)) << name;
    const std::int32_t encrypted = jet_.EncryptDatabase(path);
    EXPECT_EQ(encrypted, SizeOf(path)) << name;
    EXPECT_EQ(watched_.options_, 2);
    const std::int32_t decrypted = jet_.DecryptDatabase(path);
    EXPECT_EQ(decrypted, SizeOf(path)) << name;
    EXPECT_EQ(watched_.options_, 4);
  }
  const std::int32_t small = jet_.CompactDatabase(Path("Log.mdb"), Path("Small.mdb"));
  EXPECT_TRUE(small > 0 && small == SizeOf(Path("Small.mdb")));
  EXPECT_EQ(jet_.LastError(), "");
}

TEST_F(CJetEngineTest, ThePathMayHaveEitherSeparatorOrNone) {
  MakeDatabase("Log.mdb");
  const fs::path before = fs::current_path();
  fs::current_path(folder_.Path());
  jet_.CompactDatabase("Log.mdb");
  EXPECT_EQ(watched_.temporary_, "Log.TMP") << "in the current folder";
  fs::create_directory("Sub.Folder");
  fs::rename("Log.mdb", fs::path("Sub.Folder") / "Log.v1.mdb");
  jet_.CompactDatabase("Sub.Folder\\Log.v1.mdb");
  EXPECT_EQ(watched_.temporary_, "Sub.Folder\\Log.TMP");
  EXPECT_TRUE(fs::exists("Sub.Folder/Log.v1.mdb"));
  fs::current_path(before);
  EXPECT_EQ(jet_.LastError(), "");
}

TEST_F(CJetEngineTest, AFailedCompactionNeverTouchesTheSource) {
  std::ofstream(folder_ / "Log.mdb") << "what remains of a log";
  EXPECT_EQ(jet_.CompactDatabase(Path("Log.mdb")), 0);
  EXPECT_EQ(fs::file_size(folder_ / "Log.mdb"), 21U);
  const std::string busy = MakeDatabase("Busy.mdb");
  std::ofstream(folder_ / "Busy.TMP") << "somebody's";
  EXPECT_EQ(jet_.EncryptDatabase(busy), 0);
  EXPECT_TRUE(fs::exists(platform::ToPath(busy)));
  EXPECT_EQ(fs::file_size(folder_ / "Busy.TMP"), 10U);
  const std::string itself = MakeDatabase("Same.TMP");
  EXPECT_EQ(jet_.EncryptDatabase(itself), 0);
  EXPECT_GT(fs::file_size(platform::ToPath(itself)), 0U);
}

// The text of a failure stays; whether the last operation failed, its number says.
TEST_F(CJetEngineTest, ASecondFailureWithTheSameTextIsAFailure) {
  const std::string path = MakeDatabase("Log.mdb");
  for (int i = 0; i < 2; ++i) {
    jet_.CompactDatabase(Path("none.mdb"));
    EXPECT_EQ(jet_.LastNumber(), 3024) << i;
  }
  jet_.CompactDatabase(path);
  EXPECT_EQ(jet_.LastNumber(), 0);
  EXPECT_FALSE(jet_.LastError().empty());
}

TEST_F(CJetEngineTest, CreatesDatabases) {
  const std::string path = Path("New.mdb");
  const std::int32_t size = jet_.CreateDatabase(path, 0, true);
  EXPECT_EQ(size, SizeOf(path));
  EXPECT_EQ(watched_.options_, 2);
  EXPECT_EQ(watched_.locale_, ";LANGID=0x0409;CP=1252;COUNTRY=0");
  EXPECT_GT(jet_.CreateDatabase(Path("Other.mdb"), 1, false, ";LANGID=0x0407"), 0);
  EXPECT_EQ(watched_.options_, 1);
  EXPECT_EQ(watched_.locale_, ";LANGID=0x0407");
}

TEST_F(CJetEngineTest, TunesAndCountsByNumber) {
  jet_.TuneUserCommitSync(true);
  jet_.TuneImplicitCommitSync(false);
  int value = 0;
  for (const auto tune :
       {&CJetEngine::TunePageTimeout, &CJetEngine::TuneMaxBufferSize, &CJetEngine::TuneLockRetry,
        &CJetEngine::TuneExclusiveAsyncDelay, &CJetEngine::TuneSharedAsyncDelay,
        &CJetEngine::TuneMaxLocksPerFile, &CJetEngine::TuneLockDelay, &CJetEngine::TuneRecycleLVs,
        &CJetEngine::TuneFlushTransactionTimeout})
    (jet_.*tune)(++value);
  const std::map<int, std::variant<std::int32_t, std::string>> wanted = {
      {58, "Yes"}, {59, "No"}, {6, 1}, {8, 2}, {57, 3}, {60, 4}, {61, 5}, {62, 6}, {63, 7}, {65, 8}, {66, 9}};
  EXPECT_EQ(watched_.set_, wanted);
  EXPECT_EQ((std::array{jet_.ISAMDiskReads(), jet_.ISAMDiskWrites(), jet_.ISAMCacheReads(),
                        jet_.ISAMRACacheReads(), jet_.ISAMLocksPlaced(), jet_.ISAMLocksReleased()}),
            (std::array{100, 101, 102, 103, 104, 105}));
  watched_.statistics_.clear();
  for (const auto reset : {&CJetEngine::ResetISAMDiskReads, &CJetEngine::ResetISAMDiskWrites,
                           &CJetEngine::ResetISAMCacheReads, &CJetEngine::ResetISAMRACacheReads,
                           &CJetEngine::ResetISAMLocksPlaced, &CJetEngine::ResetISAMLocksReleased})
    (jet_.*reset)();
  EXPECT_EQ(watched_.statistics_, (std::vector<std::pair<int, bool>>{
                                      {0, true}, {1, true}, {2, true}, {3, true}, {4, true}, {5, true}}));
}

TEST_F(CJetEngineTest, AddsFieldsAndRunsTransactions) {
  OpenWorkspace();
  ASSERT_EQ(jet_.OpenDBInWorkspace(MakeDatabase("Log.mdb"), false, false), 0);
  EXPECT_TRUE(jet_.AddTextFieldToTable("TXRay", "tXraySDose", 32));
  EXPECT_TRUE(jet_.AddBooleanFieldToTable("TXRay", "tXrayBEdDose"));
  EXPECT_FALSE(jet_.AddBooleanFieldToTable("TXRay", "tXrayBEdDose"));
  EXPECT_FALSE(jet_.AddTextFieldToTable("TNone", "x", 32));
  const auto definition = jet_.Database()->TableDefs("TXray");
  EXPECT_EQ(definition.FieldNamed("tXraySDose").size, 32);
  EXPECT_EQ(definition.FieldNamed("tXrayBEdDose").type, dao::FieldType::kBoolean);
  EXPECT_TRUE(jet_.TransactionStart());
  const auto rows = jet_.Database()->OpenRecordset("SELECT * FROM TXray");
  rows->Edit();
  rows->Fields("tXraySDose").SetText("12");
  rows->Update();
  EXPECT_TRUE(jet_.RefreshCache());
  EXPECT_TRUE(jet_.TransactionRollback());
  EXPECT_TRUE(rows->Fields("tXraySDose").IsNull());
  EXPECT_FALSE(jet_.TransactionCommit());
}

}  // namespace
}  // namespace varnlog::db
