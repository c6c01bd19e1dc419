#include "bench/Ratios.h"

#include <algorithm>
#include <cstdio>

namespace varnlog::bench {

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.run_type != Run::RT_Iteration || run.error_occurred || run.iterations == 0) continue;
    seconds_[run.run_name.function_name + (run.run_name.args.empty() ? "" : "/" + run.run_name.args)]
        .push_back(run.real_accumulated_time / static_cast<double>(run.iterations));
  }
  ConsoleReporter::ReportRuns(runs);
}

double RatioReporter::Median(std::string_view name) const {
  const auto found = seconds_.find(name);
  if (found == seconds_.end()) return 0;
  std::vector<double> times = found->second;
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

int RatioReporter::PrintRatios() const {
  int exceeded = 0;
  std::printf("\n%-64s %8s %8s\n", "ratio", "measured", "limit");
  for (const Ratio& ratio : ratios_) {
    const double measured = Median(ratio.measured);
    const double against = Median(ratio.against);
    if (measured <= 0 || against <= 0) continue;
    const double value = measured / against;
    const bool holds = value <= ratio.limit;
    exceeded += holds ? 0 : 1;
    std::printf("%-64.*s %8.2f %8.2f%s\n", static_cast<int>(ratio.claim.size()), ratio.claim.data(), value,
                ratio.limit, holds ? "" : "  exceeded");
  }
  return exceeded;
}

}  // namespace varnlog::bench
