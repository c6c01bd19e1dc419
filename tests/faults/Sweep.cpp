#include "tests/faults/Sweep.h"

namespace varnlog::faults {

namespace {

std::string WhereOf(const FaultPlan& plan, const Scene& scene) {
  if (!plan.Text().starts_with('c')) return {};
  return "[" + Describe(scene.Recorded(), std::stoull(plan.Text().substr(1))) + "] ";
}

}  // namespace

void Findings::Add(const std::string& point, const std::string& wrong) {
  constexpr std::size_t kMostShown = 25;
  ++tried_;
  if (!wrong.empty() && ++failed_ <= kMostShown) first_ += "\n  VARNLOG_FAULT='" + point + "': " + wrong;
}

std::string Findings::Text() const {
  return what_ + ": " + std::to_string(tried_) + " points, " + std::to_string(failed_) + " failed" + first_;
}

void Try(Scene& scene, const std::vector<FaultPlan>& plans, Findings& findings) {
  for (const FaultPlan& plan : plans) {
    scene.BeginAnew();
    std::string wrong = scene.WrongWith(scene.Runs(plan));
    if (wrong.empty()) wrong = scene.WrongInTheEnd();
    findings.Add(plan.Text(), wrong.empty() ? wrong : WhereOf(plan, scene) + wrong);
  }
}

}  // namespace varnlog::faults
