#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <signal.h>
#include <sys/wait.h>
#include <thread>

#include <gmock/gmock.h>

#include "tests/cli/Installation.h"
#include "tests/support/PrivateServer.h"

namespace varnlog::cli {
namespace {

using testing::HasSubstr;
using Milliseconds = std::chrono::milliseconds;

/// An update in a process of its own, while the suite goes on reporting.
class ServerKillsTest : public testing::Test {
 protected:
  ServerKillsTest() { server_.MakeLog(installation_.log()); }

  /// `count` exposures, each of a patient of its own.
  void Reports(int count) {
    std::vector<tools::Exposure> exposures;
    for (int i = 0; i < count; ++i) {
      const int second = reported_++;
      std::array<char, 16> time{};
      std::snprintf(time.data(), time.size(), "%02d:%02d:%02d", second / 3600 % 24, second / 60 % 60,
                    second % 60);
      exposures.push_back(NewExposure("Patient " + std::to_string(second), "XI", "01.03.2004", time.data()));
    }
    installation_.Reports(exposures);
  }
  /// How long it ran.
  Milliseconds Updates(const std::function<void(pid_t)>& meanwhile) {
    const auto begin = std::chrono::steady_clock::now();
    const std::string command = "exec " + installation_.CtlCommand() + " update >> '" +
                                (installation_.suite() / "told").string() + "' 2>&1 < /dev/null";
    const pid_t pid = fork();
    if (pid == 0) {
      execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
      _exit(1);
    }
    {
      std::atomic<bool> isOver = false;
      const std::jthread suite([&] {
        for (int i = 0; i < 200 && !isOver; ++i) {
          Reports(1);
          std::this_thread::sleep_for(Milliseconds(4));
        }
      });
      meanwhile(pid);
      int status = 0;
      waitpid(pid, &status, 0);
      if (status != 0) ++interrupted_;
      isOver = true;
    }
    return std::chrono::duration_cast<Milliseconds>(std::chrono::steady_clock::now() - begin);
  }
  void Waits(Milliseconds longest) {
    std::this_thread::sleep_for(std::chrono::microseconds(
        std::uniform_int_distribution<std::int64_t>(0, longest.count() * 1000)(random_)));
  }
  /// One of the server's processes, the first one included.
  void KillsSomeProcess(const test::PrivateServer& server) {
    const std::vector<pid_t> all = server.Processes();
    ASSERT_FALSE(all.empty());
    kill(all[std::uniform_int_distribution<std::size_t>(0, all.size() - 1)(random_)], SIGKILL);
  }
  void ExpectEachExposureOnce() {
    for (int i = 0; i < 5 && std::filesystem::exists(installation_.exchangeFile()); ++i)
      static_cast<void>(installation_.Ctl("update"));
    const Ended last = installation_.Ctl("update");
    EXPECT_EQ(last.status, 0) << last.err;
    const std::string all = installation_.Ctl("list --format csv").out;
    std::vector<int> found(static_cast<std::size_t>(reported_));
    for (std::size_t at = all.find("Patient "); at != std::string::npos; at = all.find("Patient ", at + 8))
      ++found.at(std::stoul(all.substr(at + 8)));
    for (std::size_t i = 0; i < found.size(); ++i) EXPECT_EQ(found[i], 1) << "Patient " << i;
    const Ended verified = installation_.Ctl("verify");
    EXPECT_EQ(verified.status, 0) << verified.out;
    EXPECT_THAT(verified.out, HasSubstr("sealed: " + std::to_string(reported_) + " exposures"));
  }
  /// How many moments to try.
  [[nodiscard]] static int Moments(const char* setting, int usually) {
    const char* const given = std::getenv(setting);
    return given == nullptr ? usually : std::atoi(given);
  }

  test::PrivateServer server_;
  Installation installation_{testing::UnitTest::GetInstance()->current_test_info()->name()};
  std::mt19937 random_{20261122};
  std::atomic<int> reported_ = 0;
  int interrupted_ = 0;  // updates that did not end well
};

TEST_F(ServerKillsTest, EachExposureIsThereOnceWhoeverIsKilled) {
  Reports(40);
  const Milliseconds usual = Updates([](pid_t) {});
  const int moments = Moments("VARNLOG_KILLS", 4);
  for (int i = 0; i < 2 * moments && !HasFailure(); ++i) {
    Reports(40);
    static_cast<void>(Updates([&](pid_t pid) {
      Waits(usual);
      if (i % 2 == 0) {
        kill(pid, SIGKILL);
      } else {
        KillsSomeProcess(server_);
        Waits(Milliseconds(100));
        server_.Start();
      }
    }));
    if (i % 20 == 19) ExpectEachExposureOnce();
  }
  ExpectEachExposureOnce();
  std::printf("interrupted %d of %d updates\n", interrupted_, 2 * moments);
}

// The second server has all that the first one called committed, because that one waits for it.
TEST_F(ServerKillsTest, AnIntakeGoesOnOnTheServerThatTakesTheFirstOnesPlace) {
  Reports(300);
  const Milliseconds usual = Updates([](pid_t) {});
  test::PrivateServer second(server_);
  std::string link = test::ReadFile(installation_.log());
  link.insert(link.find("\nDatabase"), "," + second.Folder());
  Installation::Write(installation_.log(), link);
  test::PrivateServer* first = &server_;
  test::PrivateServer* next = &second;
  const int moments = Moments("VARNLOG_FAILOVERS", 2);
  for (int i = 0; i < moments && !HasFailure(); ++i) {
    if (i > 0) next->Follow(*first);
    first->Sql("ALTER SYSTEM SET synchronous_standby_names = '*'; SELECT pg_reload_conf()");
    Reports(300);
    static_cast<void>(Updates([&](pid_t) {
      Waits(usual);
      first->Kill();
      next->Promote();
    }));
    std::swap(first, next);
    if (i % 10 == 9) ExpectEachExposureOnce();
  }
  ExpectEachExposureOnce();
  std::printf("interrupted %d of %d updates\n", interrupted_, moments);
}

}  // namespace
}  // namespace varnlog::cli
