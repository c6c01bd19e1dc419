#include "tests/faults/PowerCuts.h"

#include <array>
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
  constexpr std::array kVariants = {PowerCut::kNothing, PowerCut::kNamesOnly, PowerCut::kContentOnly};
  for (const Step& flush : std::vector(scene.Recorded())) {
    if (flush.call != Call::kSync) continue;
    const std::vector<Step> run = scene.Records(FaultPlan().Fail(flush.number, EIO));
    std::vector<PowerCut> cuts;
    for (const int variant : kVariants) cuts.push_back({run.back().number, variant});
    CutPower(scene, run, cuts, Disk::Flushing::kWorks, findings);
  }
}

}  // namespace varnlog::faults
