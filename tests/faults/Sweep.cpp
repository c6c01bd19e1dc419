#include "tests/faults/Sweep.h"

#include <algorithm>
#include <set>

#include <gtest/gtest.h>

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

void Expect(const Findings& findings) {
  std::puts(findings.Text().c_str());
  EXPECT_EQ(findings.Failed(), 0U) << findings.Text();
  EXPECT_TRUE(findings.Tried() > 0 || !OnlyPoint().empty());
}

void ExpectOfSeeds(Findings findings, std::uint64_t count, std::size_t few,
                   const std::function<std::string(std::uint64_t)>& what) {
  struct Seed {
    std::uint64_t value = 0;
    [[nodiscard]] std::string Text() const { return "seed " + std::to_string(value); }
  };
  std::vector<Seed> seeds;
  for (std::uint64_t i = 1; i <= count; ++i) seeds.push_back({i});
  for (const Seed& seed : Chosen(seeds, few)) findings.Add(seed.Text(), what(seed.value));
  Expect(findings);
}

}  // namespace varnlog::faults
