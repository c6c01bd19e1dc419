#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

#include "legacy/OldFile.h"
#include "tests/legacy/ConversionFixture.h"

namespace varnlog::legacy {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using Outcome = ConversionResult::Outcome;

class InterruptedConversion : public ConversionFixture {
 protected:
  // A conversion in a process of its own, which is killed after `patience` unless it was quicker.
  void ConvertsUntilKilled(std::chrono::microseconds patience) {
    const pid_t child = fork();
    if (child == 0) {
      static_cast<void>(ConvertsInPlace());
      _exit(0);
    }
    ASSERT_GT(child, 0);
    std::this_thread::sleep_for(patience);
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
  }

  // The old file has at least one of its names, and the log is either it or the complete new one.
  void ExpectNothingIsLost() {
    const std::string now = samples::Read(log_());
    if (now == original_) return;
    EXPECT_FALSE(IsJetFile(log_()));
    EXPECT_EQ(samples::Read(kept()), original_);
    EXPECT_TRUE(Open(log_())->Check().empty());
  }

  void StartsAnew(const std::string& sample) {
    for (const auto& entry : fs::directory_iterator(folder_)) {
      if (entry.path().filename().string().starts_with("Varnlog.")) fs::remove(entry.path());
    }
    HasSample(sample);
  }
};

long KillCount() {
  const char* count = std::getenv("VARNLOG_KILLS");
  return count == nullptr ? 20 : std::strtol(count, nullptr, 10);
}

TEST_F(InterruptedConversion, LosesNothingAtAnyMomentAndSucceedsNextTime) {
  const std::string sample = "log-1.1-jet4-scratch";
  const auto expected = ExpectedRows(sample);
  StartsAnew(sample + ".mdb");
  const auto start = Clock::now();
  ASSERT_EQ(ConvertsInPlace().outcome, Outcome::kDone);
  const auto whole = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start);

  std::mt19937_64 random(20260);
  std::uniform_int_distribution<long> moment(0, whole.count() * 5 / 4);
  for (long i = 0; i < KillCount(); ++i) {
    const long patience = moment(random);
    SCOPED_TRACE("killed after " + std::to_string(patience) + " microseconds");
    StartsAnew(sample + ".mdb");
    ConvertsUntilKilled(std::chrono::microseconds(patience));
    ExpectNothingIsLost();
    const auto outcome = ConvertsInPlace().outcome;
    ASSERT_TRUE(outcome == Outcome::kDone || outcome == Outcome::kNotNeeded);
    ASSERT_EQ(NewRows(log_()), expected);
    ASSERT_EQ(samples::Read(kept()), original_);
  }
}

// Every state in which a crash between two steps can leave the folder, made by hand.
TEST_F(InterruptedConversion, GoesOnFromEveryStateOfTheExchange) {
  const std::string sample = "log-1.1-jet4-scratch";
  const auto prepare = [&](int state) {
    StartsAnew(sample + ".mdb");
    const fs::path growing = folder_ / "Varnlog.mdb.converting";
    if (state == 1) std::ofstream(growing) << "half";
    if (state == 2) std::ofstream(growing.string() + "-journal") << "a journal of another file";
    if (state == 3) fs::create_hard_link(log_(), kept());
    if (state == 4) fs::copy_file(log_(), kept());
    if (state == 5) std::ofstream(growing.string() + ".new-1234-0") << "half";
  };
  for (int state = 0; state <= 5; ++state) {
    SCOPED_TRACE(state);
    prepare(state);
    ASSERT_EQ(ConvertsInPlace().outcome, Outcome::kDone);
    EXPECT_EQ(NewRows(log_()), ExpectedRows(sample));
    EXPECT_EQ(samples::Read(kept()), original_);
    ExpectNothingGrowing();
  }
}

}  // namespace
}  // namespace varnlog::legacy
