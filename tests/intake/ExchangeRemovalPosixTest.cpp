#include <fcntl.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "intake/ExchangeRemoval.h"
#include "intake/TakenFiles.h"
#include "tests/intake/ExchangeRecords.h"
#include "tests/support/Child.h"
#include "tests/support/TestFolder.h"

namespace varnlog::intake {
namespace {

using std::chrono::milliseconds;
using test::AppendFile;
using test::ReadFile;
using test::WriteFile;

class RemovalTest : public testing::Test {
 protected:
  RunTimeError Removes(std::uint64_t count) { return ExchangeRemoval(file_, options_).Remove(count); }

  [[nodiscard]] std::vector<TakenFile> Taken() const {
    std::error_code error;
    return ListTakenFiles(file_, error);
  }
  /// A process shortens the file by 500 bytes and ends at `step`.
  void DiesAt(RunStep step) {
    varnlog::test::Child run([&] {
      options_.onStep = [step](RunStep reached) {
        if (reached == step) _exit(9);
      };
      return Removes(500) == kNoError ? 0 : 1;
    });
    ASSERT_EQ(run.Wait(), 9);
  }

  test::TestFolder folder_;
  std::filesystem::path file_ = folder_ / "varnlog.sdx";
  RunOptions options_{.patience = milliseconds(30), .grace = milliseconds(0)};
};

TEST_F(RemovalTest, DeletesAFileOfWhichAllWasRead) {
  WriteFile(file_, "all of it");
  EXPECT_EQ(Removes(9), kNoError);
  EXPECT_FALSE(std::filesystem::exists(file_));
  const auto taken = Taken();
  ASSERT_EQ(taken.size(), 1U);  // a late writer's bytes would be found there
  EXPECT_FALSE(taken.front().IsPending());
  SweepTakenFiles(file_, milliseconds(60'000));
  EXPECT_EQ(Taken().size(), 1U) << "moved aside just now";
  SweepTakenFiles(file_, milliseconds(0));
  EXPECT_EQ(folder_.Count(""), 0);
}

TEST_F(RemovalTest, KeepsExactlyWhatWasAppended) {
  const std::string read(70'000, 'r');
  for (const std::size_t appended : {1U, 5U, 69'999U, 70'000U, 70'001U, 3'000'000U}) {
    std::string rest;
    for (std::size_t i = 0; i < appended; ++i) rest.push_back(static_cast<char>('a' + i % 26));
    WriteFile(file_, read + rest);
    EXPECT_EQ(Removes(read.size()), kNoError) << appended;
    EXPECT_EQ(ReadFile(file_), rest) << appended;
    EXPECT_EQ(folder_.Count(""), 1) << "nothing else is left";
  }
}

/// Another program's file can get the name between the last look and the move.
TEST_F(RemovalTest, AccountsForNothingInAFileThatTookItsPlace) {
  WriteFile(file_, "read and taken");
  options_.onStep = [this](RunStep reached) {
    if (reached != RunStep::kMovedAside) return;
    const std::filesystem::path moved = Taken().at(0).path;
    std::filesystem::rename(moved, folder_ / "elsewhere");
    WriteFile(moved, "never read yet");
  };
  EXPECT_EQ(Removes(14), kInvalidCall);
  ASSERT_EQ(Taken().size(), 1U);
  EXPECT_TRUE(Taken().front().IsPending());
  EXPECT_EQ(ReadFile(Taken().front().path), "never read yet");
}

TEST_F(RemovalTest, AnswersWithTheRunTimeNumbers) {
  EXPECT_EQ(Removes(0), kFileNotFound);
  WriteFile(file_, "short");
  EXPECT_EQ(Removes(6), kInvalidCall);
  EXPECT_EQ(Removes(0), kNoError);
  EXPECT_EQ(ReadFile(file_), "short");
  CPAXTOTokens reader{platform::CodePage(850)};
  EXPECT_FALSE(reader.DeleteReadMails(file_.string(), 6));
  EXPECT_EQ(reader.LastErr(), kInvalidCall);
  EXPECT_FALSE(reader.DeleteReadMails(file_.string(), -1));
  EXPECT_EQ(reader.LastErr(), kInvalidCall);
  EXPECT_TRUE(reader.DeleteReadMails(file_.string(), 3));
  EXPECT_EQ(ReadFile(file_), "rt");
  WriteFile(file_, "");
  EXPECT_EQ(Removes(0), kNoError);
  EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(RemovalTest, GivesUpWhenAnotherProgramLocksTheBytesThatItWrites) {
  WriteFile(file_, "0123456789");
  const varnlog::test::Holder suite([this] {
    const int file = open(file_.c_str(), O_RDWR);
    struct flock range {};
    range.l_type = F_WRLCK;
    range.l_start = 2;
    range.l_len = 1;
    fcntl(file, F_SETLK, &range);
    return nullptr;
  });
  ASSERT_TRUE(suite.Holds());
  EXPECT_EQ(Removes(4), kDeviceError);  // six bytes remain, so 0 to 5 are written to
  EXPECT_EQ(ReadFile(file_), "0123456789");
  EXPECT_EQ(Removes(8), kNoError);  // 0 to 1: not locked
}

TEST_F(RemovalTest, WaitsForAProgramThatAppendsAndGoes) {
  options_.patience = milliseconds(5000);
  WriteFile(file_, "read");
  const int held = open(file_.c_str(), O_WRONLY | O_APPEND);
  std::thread suite([held] {
    std::this_thread::sleep_for(milliseconds(50));
    EXPECT_EQ(write(held, "+late", 5), 5);
    close(held);
  });
  EXPECT_EQ(Removes(4), kNoError);
  suite.join();
  EXPECT_EQ(ReadFile(file_), "+late");
}

TEST_F(RemovalTest, LeavesTheFileToAProgramThatKeepsItOpen) {
  WriteFile(file_, "readrest");
  const int held = open(file_.c_str(), O_WRONLY | O_APPEND);
  EXPECT_EQ(Removes(4), kNoError);
  EXPECT_FALSE(std::filesystem::exists(file_));
  ASSERT_EQ(write(held, "+late", 5), 5);
  AppendFile(file_, "another program's");
  std::vector<TakenFile> taken = Taken();
  ASSERT_EQ(taken.size(), 1U);
  EXPECT_EQ(ReadFile(taken[0].path).substr(taken[0].from), "rest+late");
  EXPECT_TRUE(AccountFor(file_, taken[0], taken[0].size));
  SweepTakenFiles(file_, milliseconds(0));
  ASSERT_EQ(write(held, "+later", 6), 6);  // it is still there for that
  taken = Taken();
  ASSERT_EQ(taken.size(), 1U);
  EXPECT_EQ(ReadFile(taken[0].path).substr(taken[0].from), "+later");
  ASSERT_TRUE(AccountFor(file_, taken[0], taken[0].size));
  close(held);
  SweepTakenFiles(file_, milliseconds(0));
  EXPECT_TRUE(Taken().empty());
  EXPECT_EQ(ReadFile(file_), "another program's");
}

TEST_F(RemovalTest, RemovesOnlyWhatWasRead) {
  const std::filesystem::path other = folder_ / "other";
  for (const bool isShift : {false, true}) {
    WriteFile(other, "01234");
    WriteFile(file_, isShift ? "01234567" : "01234");
    Checksum sum;
    sum.Add("01234");
    ExchangeRemoval removal(file_, options_);
    EXPECT_EQ(removal.Remove(5, ExchangeRemoval::ReadBytes{*platform::IdentityOf(other), sum.Value()}),
              kInvalidCall)
        << "another file with equal bytes";
    const platform::FileIdentity identity = *platform::IdentityOf(file_);
    EXPECT_EQ(removal.Remove(5, ExchangeRemoval::ReadBytes{identity, sum.Value() + 1}), kInvalidCall);
    EXPECT_EQ(ReadFile(file_).substr(0, 5), "01234");
    EXPECT_EQ(removal.Remove(5, ExchangeRemoval::ReadBytes{identity, sum.Value()}), kNoError);
    EXPECT_EQ(ReadFile(file_), isShift ? "567" : "");
  }
  std::filesystem::remove(file_);
  std::filesystem::create_symlink("other", file_);
  EXPECT_EQ(Removes(5), kPathAccess) << "whoever put the link there decides what is removed";
  EXPECT_EQ(ReadFile(other), "01234");
}

TEST_F(RemovalTest, DoesNotTouchAnInterruptedFileThatSomebodyKeepsOpen) {
  WriteFile(file_, std::string(500, 'r') + std::string(600, 'n'));
  DiesAt(RunStep::kShiftHalf);
  const int held = open(file_.c_str(), O_RDWR);
  EXPECT_FALSE(ExchangeRemoval(file_, options_).Recover());
  EXPECT_EQ(Removes(1), kDeviceError);
  close(held);
  EXPECT_TRUE(ExchangeRemoval(file_, options_).Recover());
  EXPECT_EQ(ReadFile(file_), std::string(600, 'n'));
}

TEST_F(RemovalTest, AnErrorDuringAnInterruptedShiftIsNoDamage) {
  const std::string rest(600, 'n');
  // What cannot be read is moved out of the way, with a folder in its place, and comes back later.
  for (const char* suffix : {"", ".shift"}) {
    WriteFile(file_, std::string(500, 'r') + rest);
    DiesAt(RunStep::kShiftHalf);
    const std::filesystem::path unreadable = file_.string() + suffix;
    std::filesystem::rename(unreadable, folder_ / "away");
    std::filesystem::create_directory(unreadable);
    EXPECT_FALSE(ExchangeRemoval(file_, options_).Recover()) << suffix;
    std::filesystem::remove(unreadable);
    std::filesystem::rename(folder_ / "away", unreadable);
    EXPECT_TRUE(ExchangeRemoval(file_, options_).Recover());
    EXPECT_EQ(ReadFile(file_), rest) << suffix;
    EXPECT_EQ(folder_.Count(""), 1) << suffix;
  }
}

TEST_F(RemovalTest, TheRemainderOutlivesItsExchangeFile) {
  const std::string rest(600, 'n');
  for (const std::string& another : {std::string(), std::string(40, 'a'), std::string(2000, 'a')}) {
    for (const RunStep step : {RunStep::kShiftPrepared, RunStep::kShiftHalf, RunStep::kShiftWritten}) {
      WriteFile(file_, std::string(500, 'r') + rest);
      DiesAt(step);
      std::filesystem::remove(file_);
      if (!another.empty()) WriteFile(file_, another);
      EXPECT_TRUE(ExchangeRemoval(file_, options_).Recover());
      EXPECT_EQ(ReadFile(file_), another);
      const std::vector<TakenFile> taken = Taken();
      ASSERT_EQ(taken.size(), 1U);
      EXPECT_EQ(taken[0].from, 0U);
      EXPECT_EQ(ReadFile(taken[0].path), rest) << static_cast<int>(step);
      std::filesystem::remove(taken[0].path);
    }
  }
}

}  // namespace
}  // namespace varnlog::intake
