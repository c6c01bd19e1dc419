#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/faults/Disk.h"
#include "tests/faults/Scene.h"

namespace varnlog::faults {

/// The points that a sweep tried, and what was wrong at which.
class Findings {
 public:
  explicit Findings(std::string what) : what_(std::move(what)) {}
  /// Counts a point; `wrong` is empty when all was well.
  void Add(const std::string& point, const std::string& wrong);
  [[nodiscard]] std::size_t Failed() const { return failed_; }
  [[nodiscard]] std::size_t Tried() const { return tried_; }
  /// How many points, and the first ones that failed, each with the VARNLOG_FAULT that repeats it.
  [[nodiscard]] std::string Text() const;

 private:
  std::string what_;
  std::size_t tried_ = 0;
  std::size_t failed_ = 0;
  std::string first_;
};

/// Runs the scenario with each plan, then lets the next run come.
void Try(Scene& scene, const std::vector<FaultPlan>& plans, Findings& findings);

/// The power is cut behind changes of a recorded run; what is found then is judged by the next run. States
/// that look the same are tried once. `cuts` in the order of the run.
void CutPower(Scene& scene, const std::vector<Step>& run, const std::vector<PowerCut>& cuts,
              Disk::Flushing flushing, Findings& findings);

/// Each flush of the folder fails together with the next one, which would make up for it, and the power goes
/// at some time after it.
void CutPowerAfterFailedFlushes(Scene& scene, Findings& findings);

/// `what` of each seed from 1 to `count`, a `few` of them in a short run, finds nothing.
void ExpectOfSeeds(Findings findings, std::uint64_t count, std::size_t few,
                   const std::function<std::string(std::uint64_t)>& what);
/// Says how many points were tried.
void Expect(const Findings& findings);

}  // namespace varnlog::faults
