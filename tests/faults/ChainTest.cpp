#include <array>
#include <random>

#include <gtest/gtest.h>

#include "tests/faults/Sweep.h"

namespace varnlog::faults {
namespace {

/// A practice that goes on working while one run after the other fails: each is killed or meets errors at a
/// random call, now and then several, and the suite reports more between them.
class Chain {
 public:
  Chain(Scene& scene, std::uint64_t seed) : scene_(scene), random_(seed) {}

  /// What is wrong with a run, or in the end.
  std::string Goes() {
    const auto runs = 2 + Below(4);
    for (std::uint64_t i = 0; i < runs; ++i) {
      scene_.Reports(static_cast<int>(Below(5)));
      const std::string command = Below(4) > 0 ? "update" : Below(2) > 0 ? "compact" : "repair";
      const FaultPlan plan = Plan();
      const Outcome outcome = scene_.Runs(command, plan, static_cast<int>(i) * kSecondsBetween);
      const std::string wrong = command == "update" ? scene_.WrongWith(outcome) : WrongEnding(outcome);
      if (!wrong.empty()) return command + " " + plan.Text() + ": " + wrong;
    }
    // What a compaction has left goes with the next one.
    const Outcome compaction = scene_.Runs("compact", {}, kSecondsBetween * 6);
    if (compaction.status != 0) return "compaction fails in the end: " + compaction.err;
    return scene_.WrongInTheEnd();
  }

 private:
  static constexpr int kSecondsBetween = 10;

  std::uint64_t Below(std::uint64_t limit) { return random_() % limit; }

  FaultPlan Plan() {
    constexpr std::array kErrors = {EIO, ENOSPC, EDQUOT, EACCES, EINTR, kHalf};
    constexpr std::uint64_t kCalls = 450;  // about as many as a run makes
    FaultPlan plan;
    for (std::uint64_t faults = 1 + Below(3); faults > 0; --faults) {
      const std::uint64_t call = 1 + Below(kCalls);
      const int error = kErrors[Below(kErrors.size())];
      if (Below(3) == 0) {
        plan.KillAt(call);
      } else if (Below(3) == 0 && error != EINTR) {
        plan.FailFrom(call, error);
      } else {
        plan.Fail(call, error);
      }
    }
    return plan;
  }

  Scene& scene_;
  std::mt19937_64 random_;
};

TEST(ChainTest, SeveralFaultsInARowLoseNothing) {
  Scene scene(ScenarioNamed("update_new"));
  ExpectOfSeeds(Findings("chains"), 1200, 25, [&](std::uint64_t seed) {
    scene.BeginAnew();
    return Chain(scene, seed).Goes();
  });
}

}  // namespace
}  // namespace varnlog::faults
