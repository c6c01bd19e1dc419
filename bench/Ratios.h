#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

namespace varnlog::bench {

/// One claim about speed or memory: one benchmark in terms of another of the same run, or, where there is
/// nothing to compare it with, by itself in seconds or megabytes.
struct Ratio {
  std::string_view claim;
  std::string_view measured;  // benchmark names as run, arguments included
  std::string_view against;   // empty: the limit is absolute
  double limit;
};

/// Prints the median of each benchmark and afterwards each ratio whose benchmarks were run, with its limit.
/// Ratios are those of the best of the repetitions, because whatever else the machine does only ever adds: of
/// processor time, or of real time where a benchmark says so because it waits for other processes or the
/// disk.
class RatioReporter final : public benchmark::ConsoleReporter {
 public:
  explicit RatioReporter(std::span<const Ratio> ratios)
      : benchmark::ConsoleReporter(OO_None), ratios_(ratios) {}

  void ReportRuns(const std::vector<Run>& runs) override;
  /// The number of ratios above their limit and of benchmarks that failed.
  [[nodiscard]] int PrintRatios() const;

 private:
  [[nodiscard]] double Best(std::string_view name) const;

  std::span<const Ratio> ratios_;
  std::map<std::string, std::vector<double>, std::less<>> seconds_;
  int failed_ = 0;
};

}  // namespace varnlog::bench
