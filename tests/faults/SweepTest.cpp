#include <gtest/gtest.h>

#include "tests/faults/Sweep.h"

namespace varnlog::faults {
namespace {

/// Every method over every scenario; Findings says how many points were tried.
class SweepTest : public testing::TestWithParam<Scenario> {
 protected:
  void Tries(const std::string& method, const std::vector<FaultPlan>& plans) {
    Findings findings(method + " " + GetParam().name);
    Try(scene_, plans, findings);
    Expect(findings);
  }

  Scene scene_{GetParam()};
};

std::string NameOf(const testing::TestParamInfo<Scenario>& scenario) {
  return scenario.param.name;
}

INSTANTIATE_TEST_SUITE_P(Faults, SweepTest, testing::ValuesIn(AllScenarios()), NameOf);

TEST_P(SweepTest, FileCallsFail) {
  Tries("file calls", Chosen(EveryFileFault(scene_.Recorded()), 45));
}

TEST_P(SweepTest, AllocationsFail) {
#ifdef VARNLOG_SANITIZED
  GTEST_SKIP() << "the sanitizers bring their own allocation";
#endif
  Tries("allocations", Chosen(EveryAllocation(scene_.Allocations()), 25));
}

class ChangingSweepTest : public SweepTest {};

INSTANTIATE_TEST_SUITE_P(Faults, ChangingSweepTest, testing::ValuesIn(ChangingScenarios()), NameOf);

TEST_P(ChangingSweepTest, Kills) {
  Tries("kills", Chosen(EveryKill(scene_.Recorded()), 12));
}

TEST_P(ChangingSweepTest, PowerCuts) {
  constexpr int kVariants = 12;
  Findings findings("power cuts " + GetParam().name);
  CutPower(scene_, scene_.Recorded(), Chosen(EveryPowerCut(scene_.Recorded(), kVariants), 25),
           Disk::Flushing::kWorks, findings);
  Expect(findings);
}

class FlushTest : public SweepTest {};

INSTANTIATE_TEST_SUITE_P(Faults, FlushTest,
                         testing::Values(ScenarioNamed("update_new"), ScenarioNamed("correct")), NameOf);

TEST_P(FlushTest, AFailureBeforeAPowerCut) {
  Findings findings("failed flushes and power cuts " + GetParam().name);
  CutPowerAfterFailedFlushes(scene_, findings);
  Expect(findings);
}

// A method that finds nothing must be known to find something. If flushing did nothing, exposures would be
// lost.
TEST(MethodTest, PowerCutsSeeThatFlushingIsMissing) {
  Scene scene(ScenarioNamed("update_new"));
  Findings findings("power cuts without flushing");
  CutPower(scene, scene.Recorded(), EveryPowerCut(scene.Recorded(), 5), Disk::Flushing::kIsIgnored, findings);
  EXPECT_GT(findings.Failed(), findings.Tried() / 10) << findings.Text();
}

}  // namespace
}  // namespace varnlog::faults
