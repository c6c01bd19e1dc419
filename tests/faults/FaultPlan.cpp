#include "tests/faults/FaultPlan.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace varnlog::faults {

std::vector<FaultPlan> EveryFileFault(const std::vector<Step>& run) {
  constexpr std::array kErrors = {EIO, ENOSPC, EDQUOT, EACCES, EINTR, kHalf};
  std::vector<FaultPlan> plans;
  for (const Step& step : run) {
    for (const int error : kErrors) {
      if (!CanAnswer(step.call, error)) continue;
      plans.push_back(FaultPlan().Fail(step.number, error));
      // A signal that never ends is none that a program has to bear.
      if (error != EINTR) plans.push_back(FaultPlan().FailFrom(step.number, error));
    }
  }
  return plans;
}

std::vector<FaultPlan> EveryKill(const std::vector<Step>& run) {
  std::vector<FaultPlan> plans;
  for (const Step& step : run) {
    if (Changes(step.call)) plans.push_back(FaultPlan().KillAt(step.number));
  }
  return plans;
}

std::vector<FaultPlan> EveryAllocation(std::uint64_t count) {
  std::vector<FaultPlan> plans;
  for (std::uint64_t i = 1; i <= count; ++i) {
    plans.push_back(FaultPlan().FailAllocation(i));
    plans.push_back(FaultPlan().FailAllocationsFrom(i));
  }
  return plans;
}

bool IsLong() {
  return std::getenv("VARNLOG_SLOW") != nullptr;
}

std::size_t PointCount(std::size_t all, std::size_t few) {
  const char* const wanted = std::getenv("VARNLOG_POINTS");
  if (wanted != nullptr) return std::min<std::size_t>(all, std::strtoul(wanted, nullptr, 10));
  return IsLong() ? all : std::min(all, few);
}

std::string OnlyPoint() {
  const char* const point = std::getenv("VARNLOG_FAULT");
  return point == nullptr ? "" : point;
}

}  // namespace varnlog::faults
