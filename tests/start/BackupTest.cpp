#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "backup/Schedule.h"
#include "platform/Files.h"
#include "start/StartUp.h"
#include "tests/start/AppFixture.h"

namespace varnlog::backup {
namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;
using testing::SizeIs;

class BackupTest : public testing::Test {
 protected:
  void SetUp() override {
    folder_.InstallProgram();
    ASSERT_TRUE(start::OpenLogWorkspace(globals_));
    fs::copy_file(folder_.Program() / "varnlog.md0", log_);
    fs::create_directory(backups_);
    Add(3);
  }
  ~BackupTest() override { globals_.LogEngineGl.reset(); }

  db::CJetEngine& Engine() { return *globals_.LogEngineGl; }
  void Add(int exposures) {
    ASSERT_EQ(Engine().OpenDBInWorkspace(log_.string(), false, false), 0) << Engine().LastError();
    for (int i = 0; i < exposures; ++i)
      Engine().Database()->Execute(
          "INSERT INTO TXray (tXraySName, tXrayTs) VALUES ('Weiß', '2024-06-30 08:00:00')");
    Engine().CloseDBInWorkspace();
  }
  std::int64_t Exposures() { return ReadContent(Engine(), log_).exposures; }
  fs::path Make(int day, const fs::path& log) {
    return MakeBackup(Engine(), log, backups_, *platform::DateTime::FromCivil(2026, 11, day, 6, 12, 5))
        .backup.path;
  }

  start::test::SuiteFolder folder_;
  core::Globals globals_ = folder_.NewGlobals();
  fs::path log_ = platform::ToPath(folder_.Data("Varnlog.mdb"));
  fs::path backups_ = platform::ToPath(folder_.Data("Sicherungen"));
};

TEST_F(BackupTest, GivesTheLogBackWhatItHeld) {
  const fs::path made = Make(22, log_);
  EXPECT_EQ(made.filename(), "Varnlog 2026-11-22 06-12-05.mdb");
  EXPECT_THAT(CheckBackup(Engine(), made), IsEmpty());
  Add(2);
  const auto before = platform::IdentityOf(log_);
  const fs::path kept = Restore(Engine(), made, log_);
  EXPECT_EQ(Exposures(), 3);
  EXPECT_EQ(platform::IdentityOf(log_), before) << "others have this file open";
  EXPECT_EQ(ReadContent(Engine(), kept).exposures, 5);
  fs::remove(log_);
  EXPECT_EQ(Restore(Engine(), made, log_), fs::path());
  EXPECT_EQ(Exposures(), 3);
  // What is left of a log may be no database at all.
  std::ofstream(log_, std::ios::trunc) << std::string(40'000, 'x');
  EXPECT_NE(Restore(Engine(), made, log_), fs::path());
  EXPECT_EQ(Exposures(), 3);
}

TEST_F(BackupTest, NothingIsWrittenOverAndNoHalfCopyStays) {
  static_cast<void>(Make(22, log_));
  EXPECT_THROW(Make(22, log_), dao::EngineError);
  fs::remove_all(backups_);
  EXPECT_THROW(Make(23, log_), dao::EngineError) << "the folder is not made anew: a disk may be missing";
  fs::create_directory(backups_);
  std::ofstream(log_, std::ios::trunc) << "no database";
  EXPECT_THROW(Make(24, log_), dao::EngineError);
  EXPECT_TRUE(fs::is_empty(backups_));
}

TEST_F(BackupTest, AChangedCopyIsFound) {
  const fs::path made = Make(22, log_);
  {
    std::fstream file(made, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(60);
    file.put('x');
  }
  EXPECT_THAT(CheckBackup(Engine(), made), SizeIs(1));
  fs::remove(DigestFile(Make(23, log_)));
  EXPECT_THAT(ListBackups(backups_, log_), SizeIs(1)) << "without a digest it is any file";
}

TEST_F(BackupTest, CopiesOfAnotherLogOfThatNameAreLeftAlone) {
  const fs::path other = platform::ToPath(folder_.Data("Zweig")) / "Varnlog.mdb";
  fs::create_directory(other.parent_path());
  fs::copy_file(log_, other);
  for (int day = 1; day <= 5; ++day) static_cast<void>(Make(day, day == 2 ? other : log_));
  const auto backups = ListBackups(backups_, log_);
  ASSERT_THAT(backups, SizeIs(4));
  EXPECT_EQ(backups.front().taken.Day(), 5);
  const auto now = *platform::DateTime::FromCivil(2026, 11, 6);
  const auto old = Superfluous(backups, {.count = 2, .days = 4}, now);
  ASSERT_THAT(old, SizeIs(1));
  EXPECT_EQ(old[0].taken.Day(), 1);
  Remove(old[0]);
  EXPECT_THAT(ListBackups(backups_, log_), SizeIs(3));
  EXPECT_THAT(ListBackups(backups_, other), SizeIs(1));
  EXPECT_TRUE(IsDue({backups_.string(), {}}, log_.string(), now));
  EXPECT_FALSE(IsDue({backups_.string(), {}}, log_.string(), backups.front().taken));
}

}  // namespace
}  // namespace varnlog::backup
