#include "tests/faults/PowerCuts.h"

#include <algorithm>
#include <set>

namespace varnlog::faults {

void CutPower(Scene& scene, const std::vector<Step>& run, const std::vector<PowerCut>& cuts,
              Disk::Flushing flushing, Findings& findings) {
  Disk disk(scene.folder(), scene.Beginning(), flushing);
  auto step = run.begin();
  std::set<std::pair<int, Files>> tried;
  for (const PowerCut& cut : cuts) {
    for (; step != run.end() && step->number <= cut.after; ++step) disk.Do(*step);
    const Files found = disk.After(cut);
    const int acknowledged = scene.BeginsAfterPowerCut(found, run, cut.after);
    if (!tried.insert({acknowledged, ReadFolder(scene.folder())}).second) continue;
    const std::string wrong = scene.WrongInTheEnd();
    findings.Add(cut.Text(), wrong.empty() ? "" : "[" + Describe(run, cut.after) + "] " + wrong);
  }
}

void CutPowerAfterFailedFlushes(Scene& scene, Findings& findings) {
  constexpr int kVariants = 8;
  constexpr std::size_t kFew = 30;
  std::vector<std::uint64_t> flushes;
  for (const Step& step : scene.Recorded()) {
    if (step.call == Call::kSync && step.path == scene.folder()) flushes.push_back(step.number);
  }
  for (std::size_t i = 0; i < flushes.size(); ++i) {
    FaultPlan plan;
    for (const std::size_t failing : {i, std::min(i + 1, flushes.size() - 1)})
      plan.Fail(flushes[failing], EIO);
    const std::vector<Step> run = scene.Records(plan);
    std::vector<PowerCut> cuts = EveryPowerCut(run, kVariants);
    std::erase_if(cuts, [&](const PowerCut& cut) { return cut.after < flushes[i]; });
    CutPower(scene, run, Chosen(cuts, kFew), Disk::Flushing::kWorks, findings);
  }
}

}  // namespace varnlog::faults
