#include <memory>
#include <stdexcept>

#include <benchmark/benchmark.h>

#include "bench/BareScan.h"
#include "bench/Installation.h"
#include "statistics/StatisticsReader.h"

// Statistics of a million rows against a bare scan of the columns that they need.

namespace varnlog::bench {
namespace {

constexpr std::int64_t kLarge = 1'000'000;
constexpr std::int64_t kRowsPerSlice = 20'000;
constexpr const char* kAll = "SELECT TXray.* From TXray ORDER BY TXray.tXrayTs DESC;";

void StatisticsAll(benchmark::State& state) {
  const Installation& practice = FilledPractice(kLarge);
  dao::DBEngine engine;
  engine.SetSystemDB((practice.ProgramFolder() / "system.mdw").string());
  const auto workspace = engine.CreateWorkspace("Bench", "Admin", "");
  const auto log = workspace->OpenDatabase(practice.LogFile().string(), false, true);
  const auto rows = log->OpenRecordset(kAll, dao::RecordsetType::kDynaset);
  while (!rows->Populate(kLarge)) {
  }
  for (auto _ : state) {
    statistics::StatisticsReader reader(*log, rows->Ids(), *platform::DateTime::FromIso("2026-11-22"));
    while (!reader.Read(kRowsPerSlice)) {
    }
    if (reader.Take().all.exposures != kLarge) state.SkipWithError("not all of them");
  }
}

void BareStatistics(benchmark::State& state) {
  ScanBare(state, FilledPractice(kLarge).LogFile(),
           "SELECT tXrayTs, tXraySType, tXraySDose, tXraySDiagRetry, tXraySDr, tXrayDBirthday, "
           "tXrayCulIntIDPk FROM TXray");
}

BENCHMARK(BareStatistics)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(7);
BENCHMARK(StatisticsAll)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(7);

}  // namespace
}  // namespace varnlog::bench
