#include "bench/Ratios.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace varnlog::bench {

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.error_occurred) ++failed_;
    if (run.run_type != Run::RT_Iteration || run.error_occurred || run.iterations == 0) continue;
    const bool real = !run.run_name.time_type.empty();
    const double seconds = real ? run.real_accumulated_time : run.cpu_accumulated_time;
    seconds_[run.run_name.function_name + (run.run_name.args.empty() ? "" : "/" + run.run_name.args)]
        .push_back(seconds / static_cast<double>(run.iterations));
  }
  // Of several repetitions the median tells enough.
  std::vector<Run> shown;
  std::copy_if(runs.begin(), runs.end(), std::back_inserter(shown), [](const Run& run) {
    return run.error_occurred || run.repetitions == 1 || run.aggregate_name == "median";
  });
  if (!shown.empty()) ConsoleReporter::ReportRuns(shown);
}

double RatioReporter::Best(std::string_view name) const {
  const auto found = seconds_.find(name);
  if (found == seconds_.end()) return 0;
  return *std::min_element(found->second.begin(), found->second.end());
}

int RatioReporter::PrintRatios() const {
  int exceeded = 0;
  std::printf("\n%-64s %8s %8s\n", "ratio", "measured", "limit");
  for (const Ratio& ratio : ratios_) {
    const double measured = Best(ratio.measured);
    const double against = ratio.against.empty() ? 1 : Best(ratio.against);
    if (measured <= 0 || against <= 0) continue;
    const double value = measured / against;
    const bool holds = value <= ratio.limit;
    exceeded += holds ? 0 : 1;
    std::printf("%-64.*s %8.3g %8.3g%s\n", static_cast<int>(ratio.claim.size()), ratio.claim.data(), value,
                ratio.limit, holds ? "" : "  exceeded");
  }
  if (failed_ > 0) std::printf("%d benchmarks failed\n", failed_);
  return exceeded + failed_;
}

}  // namespace varnlog::bench
