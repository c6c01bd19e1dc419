#pragma once

#include <iosfwd>
#include <string>
#include <vector>

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

}  // namespace varnlog::faults
