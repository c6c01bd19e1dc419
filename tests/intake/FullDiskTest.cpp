#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/intake/ExchangeRecords.h"
#include "tests/intake/Practice.h"

namespace varnlog::intake {
namespace {

/// Runs an update in a process whose files may not grow beyond `bytes`, as on a full disk. Its exit status
/// tells how it ended.
int OutcomeWithRoomFor(std::uintmax_t bytes, const std::filesystem::path& folder) {
  const pid_t child = fork();
  if (child == 0) {
    std::signal(SIGXFSZ, SIG_IGN);
    test::Practice practice(folder);
    const rlimit room{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &room);
    const UpdateResult result = practice.Updates();
    const std::vector<std::string> keys = practice.view.Keys();
    if (result.outcome == UpdateResult::Outcome::kFailed)
      _exit(keys == std::vector<std::string>{"RU_ERR_WRITE"} ? 1 : 9);
    const bool kept = !keys.empty() && keys.front() == "RU_ERR_FILEDEL";
    _exit(result.outcome != UpdateResult::Outcome::kDone ? 9 : kept ? 2 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(FullDiskTest, LeavesLogAndExchangeFileAsTheyWereOrBothDone) {
  const int records = 400;
  std::string bytes;
  for (int i = 0; i < records; ++i) bytes += test::Exposure{.lastName = "Patient " + std::to_string(i)}.New();
  int failed = 0;
  int done = 0;
  for (std::uintmax_t more = 0; more < 200'000; more += 8192) {
    test::TestFolder folder;
    {
      const test::Practice practice(folder.Path());
      practice.Reports(bytes);
    }
    const std::uintmax_t room = std::filesystem::file_size(folder / "Varnlog.mdb") + more;
    const int outcome = OutcomeWithRoomFor(room, folder.Path());
    ASSERT_LE(outcome, 2) << "room for " << more;
    ASSERT_GE(outcome, 0) << "room for " << more;
    test::Practice practice(folder.Path());
    if (outcome == 1) {
      ++failed;
      EXPECT_EQ(practice.Log().size(), 0U);
      EXPECT_EQ(test::ReadFile(practice.exchange), bytes);
      EXPECT_EQ(practice.Updates().added, records);
    } else {
      ++done;
      EXPECT_EQ(test::ReadFile(practice.exchange), outcome == 2 ? bytes : "");
      EXPECT_NE(practice.Updates().outcome, UpdateResult::Outcome::kFailed);
    }
    EXPECT_EQ(practice.Differences(records), "") << "room for " << more;
  }
  EXPECT_GT(failed, 0);
  EXPECT_GT(done, 0);
}

}  // namespace
}  // namespace varnlog::intake
