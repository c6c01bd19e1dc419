#include <string>
#include <vector>

#include <QApplication>
#include <QStyleFactory>
#include <benchmark/benchmark.h>

#include "bench/Claims.h"
#include "bench/Program.h"
#include "bench/Ratios.h"
#include "bench/ServerEntries.h"

namespace {

/// What a call without options means. Repetitions take turns, so that whatever else the machine does meets
/// both sides of a ratio.
std::vector<std::string> WithDefaults(int argc, char** argv) {
  std::vector<std::string> arguments(argv, argv + argc);
  arguments.insert(arguments.begin() + 1, {"--benchmark_enable_random_interleaving=true",
                                           "--benchmark_repetitions=5", "--benchmark_min_time=0.2"});
  return arguments;
}

int Measure(int argc, char** argv) {
  using namespace varnlog;
  std::vector<std::string> arguments = WithDefaults(argc, argv);
  std::vector<char*> pointers;
  pointers.reserve(arguments.size());
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  int count = static_cast<int>(pointers.size());
  benchmark::Initialize(&count, pointers.data());
  if (benchmark::ReportUnrecognizedArguments(count, pointers.data())) return 2;
  bench::RatioReporter reporter(bench::Claims());
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  bench::CloseViews();
  return reporter.PrintRatios() == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_LOGGING_RULES", "*.debug=false;*.warning=false");
  const QApplication application(argc, argv);
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  // This program starts itself where the memory of a whole process counts.
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.size() == 3 && arguments[0] == varnlog::bench::kWalkOption) {
    return varnlog::bench::Walk(arguments[1], arguments[2]);
  }
  if (arguments.size() == 3 && arguments[0] == varnlog::bench::kEnterOption) {
    return varnlog::bench::EnterValues(arguments[1], std::stoi(arguments[2]));
  }
  return Measure(argc, argv);
}
