#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

namespace varnlog::bench {

/// One claim about speed: the time of one benchmark in terms of another of the same run.
struct Ratio {
  std::string_view claim;
  std::string_view measured;  // benchmark names as run, arguments included
  std::string_view against;
  double limit;
};

/// Prints what the console reporter prints and afterwards each ratio whose two benchmarks were run, with its
/// limit. Times are the medians over the repetitions.
class RatioReporter final : public benchmark::ConsoleReporter {
 public:
  explicit RatioReporter(std::span<const Ratio> ratios) : ratios_(ratios) {}

  void ReportRuns(const std::vector<Run>& runs) override;
  /// The number of ratios above their limit.
  [[nodiscard]] int PrintRatios() const;

 private:
  [[nodiscard]] double Median(std::string_view name) const;

  std::span<const Ratio> ratios_;
  std::map<std::string, std::vector<double>, std::less<>> seconds_;
};

}  // namespace varnlog::bench
