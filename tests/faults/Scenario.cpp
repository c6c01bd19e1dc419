#include "tests/faults/Scenario.h"

#include <algorithm>
#include <fstream>

#include "tests/Paths.h"
#include "tests/faults/Scene.h"

namespace varnlog::faults {

namespace {

constexpr int kBefore = 40;  // exposures that the log holds
constexpr int kNew = 12;     // exposures that are waiting

void NothingYet(Scene& scene) {
  scene.Reports(kNew);
}

void Settled(Scene& scene) {
  scene.Reports(kBefore);
  scene.Settles();
}

void NewOnes(Scene& scene) {
  Settled(scene);
  scene.Reports(kNew);
  scene.Informs();
}

void Duplicates(Scene& scene) {
  NewOnes(scene);
  const std::string again = ReadFile(scene.exchange());
  scene.Settles();
  WriteFile(scene.exchange(), again);
}

/// What a run leaves that is killed before it makes the call for the `nth` time.
std::function<void(Scene&)> LeftBefore(Call call, std::string ending, int nth = 1) {
  return [=](Scene& scene) {
    NewOnes(scene);
    scene.IsCutOffBefore(call, ending, nth);
    scene.Reports(3);
  };
}

/// The same while the remainder is moved to the front of the exchange file.
std::function<void(Scene&)> ShiftLeftBefore(Call call, std::string ending) {
  return [=](Scene& scene) {
    NewOnes(scene);
    scene.WillArrive(3);
    scene.IsCutOffBefore(call, ending);
    scene.Reports(2);
  };
}

/// A file that was moved aside while the suite kept it open, with exposures that came too late for that run.
void LateInTakenFile(Scene& scene) {
  NewOnes(scene);
  {
    std::ofstream held(scene.exchange(), std::ios::binary | std::ios::app);
    scene.Runs("update");
    held << scene.Records(3);
  }
  scene.Reports(2);
}

void WellFilled(Scene& scene) {
  scene.Reports(400);
  scene.Settles();
}

void PageDamaged(Scene& scene) {
  WellFilled(scene);
  scene.DamagesAPageThatCostsNoRow();
}

std::function<void(Scene&)> OldLog(const std::string& name) {
  return [name](Scene& scene) {
    const std::string sample = VARNLOG_SOURCE_DIR "/tests/data/jet/log-1.1-jet4-scratch.mdb";
    WriteFile(scene.folder() / name, ReadFile(sample));
  };
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Scenario& scenario) {
  return stream << scenario.name;
}

const std::vector<Scenario>& AllScenarios() {
  static const std::vector<Scenario> scenarios = {
      {"update_first", "update", Promise::kTaken, NothingYet},
      {"update_new", "update", Promise::kTaken, NewOnes},
      {"update_duplicates", "update", Promise::kTaken, Duplicates},
      {"update_arriving", "update", Promise::kTaken, NewOnes, true},
      {"update_held", "update", Promise::kTaken, NewOnes, false, true},
      {"update_held_arriving", "update", Promise::kTaken, NewOnes, true, true},
      {"update_after_unsafe_copy", "update", Promise::kTaken, LeftBefore(Call::kRename, ".intake")},
      {"update_after_copy", "update", Promise::kTaken, LeftBefore(Call::kRename, ".taken")},
      {"update_after_removal", "update", Promise::kTaken, LeftBefore(Call::kRemove, "-journal")},
      {"update_after_commit", "update", Promise::kTaken, LeftBefore(Call::kRemove, ".intake")},
      {"update_after_shift_begun", "update", Promise::kTaken, ShiftLeftBefore(Call::kWrite, "varnlog.sdx")},
      {"update_after_shift_moved", "update", Promise::kTaken,
       ShiftLeftBefore(Call::kTruncate, "varnlog.sdx")},
      {"update_after_shift_cut", "update", Promise::kTaken, ShiftLeftBefore(Call::kRemove, ".shift")},
      {"update_late_in_taken", "update", Promise::kTaken, LateInTakenFile},
      {"compact", "compact", Promise::kKept, WellFilled},
      {"repair", "repair", Promise::kKept, PageDamaged},
      {"correct", "correct " + std::to_string(kCorrections), Promise::kCorrected, Settled},
      {"check", "check", Promise::kShown, Settled},
      {"list", "list --format csv", Promise::kShown, Settled},
      {"report", "report --output out.pdf", Promise::kKept, Settled},
      {"convert", "convert --overwrite Old.mdb New.mdb", Promise::kConverted, OldLog("Old.mdb")},
      {"convert_in_place", "adopt", Promise::kConverted, OldLog("Varnlog.mdb")},
  };
  return scenarios;
}

std::vector<Scenario> ChangingScenarios() {
  std::vector<Scenario> scenarios = AllScenarios();
  std::erase_if(scenarios, [](const Scenario& scenario) { return scenario.promise == Promise::kShown; });
  return scenarios;
}

const Scenario& ScenarioNamed(const std::string& name) {
  return *std::ranges::find(AllScenarios(), name, &Scenario::name);
}

}  // namespace varnlog::faults
