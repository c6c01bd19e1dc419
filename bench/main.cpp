#include <benchmark/benchmark.h>

#include "bench/Claims.h"
#include "bench/Ratios.h"

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  varnlog::bench::RatioReporter reporter(varnlog::bench::Claims());
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return reporter.PrintRatios() == 0 ? 0 : 1;
}
