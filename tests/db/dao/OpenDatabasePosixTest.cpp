#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <sqlite3.h>

#include "db/dao/ServerLink.h"
#include "tests/db/dao/EngineFixture.h"
#include "tests/support/Child.h"
#include "tests/support/Table.h"

namespace varnlog::dao {

namespace fs = std::filesystem;

namespace {

class OpenDatabaseTest : public EngineTest {
 protected:
  [[nodiscard]] ErrorNumber Opening(const std::string& path, bool readOnly = false) {
    return ErrorOf([&] { static_cast<void>(Open(path, readOnly)); });
  }
};

TEST_F(OpenDatabaseTest, TellsWhyAFileCannotBeOpened) {
  folder_.Holding("empty.mdb", "");
  folder_.Holding("letter.txt", "Dear Dr. Weiß, this is a letter and no database at all.");
  folder_.Holding("short.mdb", "SQLite format 3");
  folder_.Holding("old.mdb", std::string("\0\1\0\0Standard Jet DB\0", 20) + std::string(4096, 'x'));
  folder_.Holding("header.mdb", std::string("SQLite format 3\0", 16) + std::string(4096, '\xff'));
  fs::create_directory(folder_ / "folder.mdb");
  for (const auto& [name, number] : Table<const char*, ErrorNumber>{{"missing.mdb", kFileNotFound},
                                                                    {"no folder/log.mdb", kInvalidPath},
                                                                    {"no\\such\\log.mdb", kInvalidPath},
                                                                    {"folder.mdb", kCannotOpen},
                                                                    {"empty.mdb", kUnrecognisedFormat},
                                                                    {"letter.txt", kUnrecognisedFormat},
                                                                    {"short.mdb", kUnrecognisedFormat},
                                                                    {"old.mdb", kUnrecognisedFormat},
                                                                    {"header.mdb", kUnrecognisedFormat}}) {
    const std::string path = folder_.Path().string() + '/' + name;
    for (const bool readOnly : {false, true}) {
      EXPECT_EQ(Opening(path, readOnly), number) << name << (readOnly ? ", read only" : "");
      const std::string text = ErrorTextOf([&] { static_cast<void>(Open(path, readOnly)); });
      EXPECT_NE(text.find(name), std::string::npos) << text;
    }
  }
  EXPECT_NE(ErrorTextOf([&] { static_cast<void>(Open(Path("old.mdb"))); }).find("old format"),
            std::string::npos);
}

TEST_F(OpenDatabaseTest, RefusesToWriteWithoutPermissionButReads) {
  const std::string path = MakeLog();
  fs::permissions(path, fs::perms::owner_read);
  EXPECT_EQ(Opening(path), kNoPermission);
  EXPECT_EQ(Open(path, true)->TableNames(), (std::vector<std::string>{"TConfig", "TXray"}));
  fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
  fs::permissions(folder_.Path(), fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_EQ(Opening(path), kNoPermission) << "no journal can be made in the folder";
  EXPECT_EQ(Opening(path, true), kNone);
  fs::permissions(folder_.Path(), fs::perms::owner_all);
}

TEST_F(OpenDatabaseTest, ReadsFromAReadOnlyMedium) {
  fs::create_directory(folder_ / "medium");
  MakeLog("medium/log.mdb");
  const std::string medium = (folder_ / "medium").string();
  if (mount(medium.c_str(), medium.c_str(), nullptr, MS_BIND, nullptr) != 0)
    GTEST_SKIP() << "cannot mount here";
  const bool isReadOnly =
      mount(nullptr, medium.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr) == 0;
  const ErrorNumber writing = Opening(Path("medium/log.mdb"));
  const ErrorNumber reading = Opening(Path("medium/log.mdb"), true);
  ASSERT_EQ(umount2(medium.c_str(), MNT_DETACH), 0);
  ASSERT_TRUE(isReadOnly);
  EXPECT_EQ(writing, kNoPermission);
  EXPECT_EQ(reading, kNone);
}

TEST_F(OpenDatabaseTest, WaitsForALockAndThenReportsTheFileInUse) {
  const std::string path = MakeLog();
  const test::Holder holder([&] {
    const auto held = std::make_shared<std::pair<DBEngine, std::shared_ptr<Database>>>();
    held->first.SetSystemDB(engine_.SystemDB());
    held->second = held->first.CreateWorkspace("Child", "Admin", "")->OpenDatabase(path, true, false);
    return held;
  });
  ASSERT_TRUE(holder.Holds());
  EXPECT_EQ(Opening(path), kFileInUse);
  EXPECT_EQ(Opening(path, true), kFileInUse);
}

TEST_F(OpenDatabaseTest, OpensExclusivelyOnlyWhenNobodyWrites) {
  const std::string path = MakeLog();
  const auto other = AnotherStation();
  const auto open = other.workspace->OpenDatabase(path, false, false);
  other.workspace->BeginTrans();
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(workspace_->OpenDatabase(path, true, false)); }), kFileInUse);
  other.workspace->Rollback();
  const auto alone = workspace_->OpenDatabase(path, true, false);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(open->OpenRecordset("TXray")); }), kFileInUse);
}

bool KeepsOthersOut(const std::string& path) {
  test::Child other([&path] {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    return fcntl(open(path.c_str(), O_RDWR), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK ? 0 : 1;
  });
  return other.Wait() == 0;
}

// A process that closes a handle of a file gives up all locks that it has on it.
TEST_F(OpenDatabaseTest, LooksAtNoFileWhoseLocksItWouldGiveUp) {
  const std::string path = MakeLog();
  const auto log = Open(path);
  fs::create_symlink(path, folder_ / "Verknüpfung.mdb");
  workspace_->BeginTrans();
  EXPECT_FALSE(IsServerLink(path));
  EXPECT_FALSE(IsServerLink(Path("Verknüpfung.mdb")));
  (void)Opening(path, true);
  EXPECT_TRUE(KeepsOthersOut(path));
}

TEST_F(OpenDatabaseTest, TakesInAnotherContentWithoutGivingUpItsLocks) {
  const std::string path = MakeLog();
  const auto source = engine_.CreateDatabase(Path("Sicherung.mdb"), {}, kNoOption);
  source->Execute("CREATE TABLE t (a TEXT); INSERT INTO t VALUES (hex(zeroblob(500000)))");
  const std::string before = ReadFile(path);
  int asked = 0;
  const std::string kept = source->CopyInto(path, [&](double) {
    if (asked++ == 0) {
      EXPECT_TRUE(KeepsOthersOut(path));
    }
    return true;
  });
  EXPECT_GT(asked, 0);
  EXPECT_EQ(ReadFile(kept), before);
  EXPECT_EQ(Open(path)->TableNames(), std::vector<std::string>{"t"});
}

TEST_F(OpenDatabaseTest, FindsADamagedFirstPage) {
  const std::string path = MakeLog();
  Damage(path, 100, 64, '\x7f');
  EXPECT_EQ(Opening(path), kDamaged);
}

TEST_F(OpenDatabaseTest, TakesAFileBackFromAnotherJournalMode) {
  const std::string path = MakeLog();
  Damage(path, 18, 2, '\2');  // as another program leaves it that keeps its journal in shared memory
  EXPECT_EQ(Opening(path, true), kNoPermission);
  EXPECT_EQ(Open(path)->TableDefs("txray").Fields().size(), 25U);
  EXPECT_EQ(Opening(path, true), kNone) << "it is an ordinary file again";
}

// A log that was restored or exchanged while it was open: its name, and with it the journal, is another
// file's.
TEST_F(OpenDatabaseTest, LeavesAFileAloneThatLostItsNameToAnother) {
  const std::string path = MakeLog();
  const auto stale = Open(path);
  FillLog(*workspace_, *stale, 3);
  const auto rows = stale->OpenRecordset("SELECT * FROM TXray ORDER BY tXrayTs");
  EXPECT_FALSE(stale->WasReplaced());
  fs::copy_file(path, Path("backup.mdb"));
  fs::rename(Path("backup.mdb"), path);
  EXPECT_TRUE(stale->WasReplaced());
  const auto other = AnotherStation();
  const auto fresh = other.workspace->OpenDatabase(path, false, false);
  other.workspace->BeginTrans();
  AddExposure(*fresh->OpenRecordset("TXray"), {"New", "Row", Minute(0), Minute(9)});
  ASSERT_TRUE(fs::exists(path + "-journal"));
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(ErrorOf([&] { rows->MoveLast(), static_cast<void>(rows->Fields(1).Text()); }), kFileReplaced);
    EXPECT_EQ(ErrorOf([&] {
                AddExposure(*stale->OpenRecordset("TXray"), {"L", "o", Minute(0), Minute(0)});
              }),
              kFileReplaced);
    EXPECT_EQ(ErrorOf([&] { workspace_->BeginTrans(); }), kFileReplaced);
  }
  EXPECT_TRUE(fs::exists(path + "-journal"));
  other.workspace->CommitTrans();
  stale->Close();
  EXPECT_EQ(Open(path)->OpenRecordset("SELECT * FROM TXray", RecordsetType::kSnapshot)->RecordCount(), 4);
}

TEST_F(OpenDatabaseTest, RefusesTablesOfForeignModules) {
  const std::string path = MakeLog();
  sqlite3* handle = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &handle), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(handle, "CREATE VIRTUAL TABLE words USING fts5(w); INSERT INTO words VALUES ('a')",
                         nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(handle);
  EXPECT_EQ(Opening(path), kUnrecognisedFormat);
  EXPECT_EQ(ErrorOf([&] { engine_.RepairDatabase(path); }), kUnrecognisedFormat);
}

TEST_F(OpenDatabaseTest, EverythingOfAClosedDatabaseIsInvalid) {
  const auto log = Open(MakeLog());
  FillLog(*workspace_, *log, 3);
  const auto table = log->OpenRecordset("TXray");
  const auto rows = log->OpenRecordset("SELECT * FROM TXray");
  auto definition = log->TableDefs("TXray");
  log->Close();
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(rows->Fields(0).Number()); }), kObjectInvalid);
  EXPECT_EQ(ErrorOf([&] { table->MoveNext(); }), kObjectInvalid);
  EXPECT_EQ(ErrorOf([&] { AddExposure(*table, {"A", "B", Minute(0), Minute(0)}); }), kObjectInvalid);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(log->OpenRecordset("TXray")); }), kObjectInvalid);
  EXPECT_EQ(ErrorOf([&] { definition.Append({.name = "x", .type = FieldType::kBoolean}); }), kObjectInvalid);
}

TEST_F(OpenDatabaseTest, NewFilesNeedAFreeNameInAFolder) {
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(engine_.CreateDatabase(Path("no/log.mdb"), "", 0)); }),
            kInvalidPath);
  const std::string path = MakeLog();
  const std::string before = ReadFile(path);
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(engine_.CreateDatabase(path, "", 0)); }), kFileExists);
  EXPECT_TRUE(ReadFile(path) == before);
}

}  // namespace
}  // namespace varnlog::dao
