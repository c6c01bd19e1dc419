#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/faults/Trace.h"

namespace varnlog::faults {

/// What is to go wrong in one run, at which of its calls. Calls and allocations are counted from 1; a run
/// without chance makes the same ones each time, so a plan reproduces.
class FaultPlan {
 public:
  FaultPlan() = default;
  /// As Text() writes it.
  explicit FaultPlan(std::string text) : text_(std::move(text)) {}

  FaultPlan& Fail(std::uint64_t call, int error) { return Add('c', call, "=" + std::to_string(error)); }
  /// Every later call that can fail in this way fails, too.
  FaultPlan& FailFrom(std::uint64_t call, int error) { return Add('c', call, "+=" + std::to_string(error)); }
  /// The process is killed before it makes the call.
  FaultPlan& KillAt(std::uint64_t call) { return Add('c', call, "=k"); }
  /// Before the call the imaging suite reports what Scene::LateExposures() made.
  FaultPlan& ArriveAt(std::uint64_t call) { return Add('c', call, "=a"); }
  FaultPlan& FailAllocation(std::uint64_t number) { return Add('m', number, "=1"); }
  FaultPlan& FailAllocationsFrom(std::uint64_t number) { return Add('m', number, "+=1"); }

  /// Joined by ';', as the preloaded library reads it: "c17=5", "c17+=28", "c40=k", "c12=a", "m100=1".
  [[nodiscard]] const std::string& Text() const { return text_; }

 private:
  FaultPlan& Add(char unit, std::uint64_t number, const std::string& what) {
    if (!text_.empty()) text_ += ';';
    text_ += unit + std::to_string(number) + what;
    return *this;
  }
  std::string text_;
};

/// Each call of the run fails in each way that it can: once, and from then on always.
[[nodiscard]] std::vector<FaultPlan> EveryFileFault(const std::vector<Step>& run);
/// The process is killed before each call that changes something.
[[nodiscard]] std::vector<FaultPlan> EveryKill(const std::vector<Step>& run);
/// Each allocation fails: once, and from then on always.
[[nodiscard]] std::vector<FaultPlan> EveryAllocation(std::uint64_t count);

/// Whether the long versions run (`./test --slow`).
[[nodiscard]] bool IsLong();
/// VARNLOG_FAULT, the one point to try; empty for all.
[[nodiscard]] std::string OnlyPoint();
/// How many points of `all`: VARNLOG_POINTS, all in a long run, else `few`.
[[nodiscard]] std::size_t PointCount(std::size_t all, std::size_t few);

/// As many of the points, evenly spread. With OnlyPoint() that one.
template <typename Point>
[[nodiscard]] std::vector<Point> Chosen(const std::vector<Point>& points, std::size_t few) {
  std::vector<Point> chosen;
  const std::string only = OnlyPoint();
  const std::size_t count = only.empty() ? PointCount(points.size(), few) : points.size();
  for (std::size_t i = 0; i < count; ++i) {
    const Point& point = points[i * points.size() / count];
    if (only.empty() || point.Text() == only) chosen.push_back(point);
  }
  return chosen;
}

}  // namespace varnlog::faults
