#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <random>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/intake/ExchangeRecords.h"
#include "tests/intake/Practice.h"

namespace varnlog::intake {
namespace {

using std::chrono::microseconds;
using std::chrono::steady_clock;

/// The long forms of these tests take minutes.
bool IsSlow() {
  return std::getenv("VARNLOG_SLOW") != nullptr;
}

/// What the processes of a test tell one another.
struct Shared {
  std::atomic<int> appended{0};
  std::atomic<int> updates{0};
  std::atomic<bool> stop{false};
};

class SharedMemory {
 public:
  SharedMemory()
      : memory_(mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)),
        shared_(new (memory_) Shared) {}
  ~SharedMemory() { munmap(memory_, sizeof(Shared)); }
  SharedMemory(const SharedMemory&) = delete;
  SharedMemory& operator=(const SharedMemory&) = delete;
  Shared* operator->() const { return shared_; }

 private:
  void* memory_;
  Shared* shared_;
};

pid_t InAProcess(const std::function<void()>& work) {
  const pid_t child = fork();
  if (child != 0) return child;
  work();
  _exit(0);
}

bool EndsWell(pid_t child) {
  int status = 0;
  return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

class KilledRunTest : public testing::Test {
 protected:
  /// The suite: opens, appends one whole record, closes, without any lock.
  void Append(int number) const {
    const std::string record = test::Exposure{.lastName = "Patient " + std::to_string(number)}.New();
    const int file = open(exchange_.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    if (file < 0 || write(file, record.data(), record.size()) != static_cast<ssize_t>(record.size()))
      _exit(3);
    close(file);
    ++shared_->appended;
  }
  /// One workstation that updates again and again.
  void UpdateForEver() const {
    test::Practice practice(folder_.Path());
    while (!shared_->stop) {
      if (practice.Updates().outcome == UpdateResult::Outcome::kDone) ++shared_->updates;
    }
  }
  void ExpectEveryExposureOnce() const {
    test::Practice practice(folder_.Path());
    EXPECT_NE(practice.Updates().outcome, UpdateResult::Outcome::kFailed);
    EXPECT_EQ(practice.Differences(shared_->appended), "");
    EXPECT_FALSE(practice.ExchangePending());
  }

  test::TestFolder folder_;
  std::filesystem::path exchange_ = folder_ / "varnlog.sdx";
  SharedMemory shared_;
};

// Long enough for a process to start and finish an update on a busy machine.
constexpr microseconds kShortestLife{40'000};

TEST_F(KilledRunTest, EveryAppendedExposureIsInTheLogOnce) {
  const int kills = IsSlow() ? 500 : 25;
  const int leastAppends = 5000;
  const pid_t suite = InAProcess([&] {
    for (int i = 0; !shared_->stop || i < leastAppends; ++i) {
      Append(i);
      std::this_thread::sleep_for(microseconds(50));
    }
  });
  // How long an update takes here decides how long a process may live.
  const auto begin = steady_clock::now();
  const pid_t first = InAProcess([this] { UpdateForEver(); });
  while (shared_->updates < 2 && steady_clock::now() - begin < std::chrono::seconds(60)) {
    std::this_thread::sleep_for(microseconds(200));
  }
  // The first updates may have found nothing yet and been done in no time.
  const auto life =
      std::max(std::chrono::duration_cast<microseconds>(steady_clock::now() - begin), kShortestLife);
  kill(first, SIGKILL);
  waitpid(first, nullptr, 0);

  std::mt19937_64 random(1);
  for (int i = 0; i < kills; ++i) {
    const pid_t updater = InAProcess([this] { UpdateForEver(); });
    std::this_thread::sleep_for(microseconds(random() % static_cast<std::uint64_t>(2 * life.count() + 1)));
    kill(updater, SIGKILL);
    ASSERT_EQ(waitpid(updater, nullptr, 0), updater);
  }
  shared_->stop = true;
  ASSERT_TRUE(EndsWell(suite));
  EXPECT_GT(shared_->updates, 2);
  ExpectEveryExposureOnce();
}

TEST_F(KilledRunTest, AppendingAtFullSpeedLosesNothing) {
  const int appends = IsSlow() ? 200'000 : 20'000;
  const pid_t updater = InAProcess([this] { UpdateForEver(); });
  for (int i = 0; i < appends; ++i) Append(i);
  shared_->stop = true;
  ASSERT_TRUE(EndsWell(updater));
  ExpectEveryExposureOnce();
}

}  // namespace
}  // namespace varnlog::intake
