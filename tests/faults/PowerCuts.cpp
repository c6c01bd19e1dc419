#include "tests/faults/PowerCuts.h"

#include <set>

namespace varnlog::faults {

void CutPower(Scene& scene, const std::vector<PowerCut>& cuts, Disk::Flushing flushing, Findings& findings) {
  Disk disk(scene.folder(), scene.Beginning(), flushing);
  auto step = scene.Recorded().begin();
  std::set<std::pair<int, Files>> tried;
  for (const PowerCut& cut : cuts) {
    for (; step != scene.Recorded().end() && step->number <= cut.after; ++step) disk.Do(*step);
    const Files found = disk.After(cut);
    const int acknowledged = scene.BeginsAfterPowerCut(found, cut.after);
    if (!tried.insert({acknowledged, ReadFolder(scene.folder())}).second) continue;
    const std::string wrong = scene.WrongInTheEnd();
    findings.Add(cut.Text(), wrong.empty() ? "" : "[" + Describe(scene.Recorded(), cut.after) + "] " + wrong);
  }
}

}  // namespace varnlog::faults
