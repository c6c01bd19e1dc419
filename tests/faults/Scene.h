#pragma once

#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "tests/cli/Installation.h"
#include "tests/faults/FaultPlan.h"
#include "tests/faults/Files.h"
#include "tests/faults/Launch.h"
#include "tests/faults/Scenario.h"

namespace varnlog::faults {

/// A scenario on a scratch suite: its beginning can be had again and again, its command runs with a plan of
/// faults, and what comes of it is judged.
class Scene {
 public:
  explicit Scene(const Scenario& scenario);
  ~Scene();
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;

  [[nodiscard]] const Scenario& scenario() const { return scenario_; }
  [[nodiscard]] std::filesystem::path folder() const { return suite_.log().parent_path(); }
  [[nodiscard]] std::filesystem::path exchange() const { return suite_.exchangeFile(); }

  // What scenarios are made of.
  /// The records of the next `count` patients, one exposure each.
  [[nodiscard]] std::string Records(int count);
  void Reports(int count) { AppendFile(exchange(), Records(count)); }
  /// The suite sends information on the first patient: somebody else was responsible.
  void Informs();
  /// Makes the records that arrive during the next run.
  void WillArrive(int count) { WriteFile(arrival_, Records(count)); }
  /// Updates until nothing is left beside the log. Throws when that fails.
  void Settles();
  void IsCutOffBefore(Call call, const std::string& ending, int nth = 1,
                      const std::string& arguments = "update");
  void DamagesAPageThatCostsNoRow();

  // The scenario itself.
  void BeginAnew();
  /// What an undisturbed run does.
  [[nodiscard]] const std::vector<Step>& Recorded() const { return recorded_; }
  [[nodiscard]] std::uint64_t Allocations() const { return allocations_; }
  [[nodiscard]] const Files& Beginning() const { return beginning_; }
  /// Puts the folder into another state than the beginning.
  void Has(const Files& files) const { WriteFolder(folder(), files); }
  /// What a run with the plan does, from the beginning on.
  [[nodiscard]] std::vector<Step> Records(const FaultPlan& plan);
  /// The folder is found like that after a power cut behind the call of this number of the run. How many
  /// corrections were acknowledged by then.
  int BeginsAfterPowerCut(const Files& found, const std::vector<Step>& run, std::uint64_t after);
  /// The scenario's command, with everything that happens meanwhile.
  Outcome Runs(const FaultPlan& plan = {});
  /// Any command; `later` seconds lie between the beginning and this run.
  Outcome Runs(const std::string& arguments, const FaultPlan& plan = {}, int later = 0);
  /// What is wrong with how a run ended; empty when all is well.
  [[nodiscard]] std::string WrongWith(const Outcome& outcome);
  /// Lets the next run come, undisturbed, and says what is wrong then: exposures lost or doubled, a log that
  /// does not pass its check, files that nobody needs.
  [[nodiscard]] std::string WrongInTheEnd();

 private:
  [[nodiscard]] std::vector<Step> Traced(const std::string& arguments, const FaultPlan& plan);
  /// When a run begins to write to the log, which is when exposures arrive.
  [[nodiscard]] FaultPlan Arrival(const std::string& arguments);
  void ArriveAfterAll(std::ofstream& held);
  [[nodiscard]] bool NothingWasRemoved() const;
  [[nodiscard]] std::string WrongWithConverted();
  [[nodiscard]] std::string WrongWithShown(const Outcome& outcome) const;
  [[nodiscard]] std::string LeftOvers() const;

  const Scenario& scenario_;
  cli::Installation suite_;
  std::filesystem::path arrival_;
  std::filesystem::path trace_;
  std::filesystem::path count_;
  int patients_ = 0;   // reported so far
  int atFirst_ = 0;    // at the beginning
  int late_ = 0;       // of these, those who arrive during the run
  int corrected_ = 0;  // corrections that were acknowledged
  int informed_ = 0;   // patients with information
  FaultPlan arrives_;
  std::string arriving_;
  Files beginning_;
  std::vector<Step> recorded_;
  std::uint64_t allocations_ = 0;
  Outcome undisturbed_;
  std::string converted_;  // the rows of the new log after an undisturbed conversion
  bool traces_ = false;    // the next run is recorded
};

/// What a log is to hold.
struct Expected {
  int patients = 0;   // "Patient 0" to "Patient N-1", one exposure each
  int corrected = 0;  // the first ones, whose comment a workstation has written
  int informed = 0;   // the first ones, about whom the suite sent information afterwards
};

/// Which exposures are missing or there several times, which corrections and informations are lost, and what
/// the log's own check finds.
[[nodiscard]] std::string WrongInLog(const cli::Installation& suite, const Expected& expected);

}  // namespace varnlog::faults
