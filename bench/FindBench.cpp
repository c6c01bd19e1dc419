#include <memory>
#include <stdexcept>

#include <benchmark/benchmark.h>

#include "bench/BareScan.h"
#include "bench/Fakes.h"
#include "bench/Installation.h"
#include "logview/RowFilter.h"

// Finding among a million rows against a bare scan of the columns that are looked at.

namespace varnlog::bench {
namespace {

constexpr std::int64_t kLarge = 1'000'000;
constexpr std::int64_t kRowsPerSlice = 20'000;
constexpr const char* kAll = "SELECT TXray.* From TXray ORDER BY TXray.tXrayTs DESC;";

class SearchedLog {
 public:
  SearchedLog() : practice_(FilledPractice(kLarge)) {
    engine_.SetSystemDB((practice_.ProgramFolder() / "system.mdw").string());
    workspace_ = engine_.CreateWorkspace("Bench", "Admin", "");
    log_ = workspace_->OpenDatabase(practice_.LogFile().string(), false, true);
    rows_ = log_->OpenRecordset(kAll, dao::RecordsetType::kDynaset);
    while (!rows_->Populate(kLarge)) {
    }
  }

  [[nodiscard]] logview::RowFilter NewFilter() {
    logview::RowFilter filter(scheme_, platform::ShortDate());
    filter.Renew(log_);
    return filter;
  }
  [[nodiscard]] const dao::Recordset& Rows() const { return *rows_; }
  [[nodiscard]] const Installation& Practice() const { return practice_; }

 private:
  const Installation& practice_;
  dao::DBEngine engine_;
  std::shared_ptr<dao::Workspace> workspace_;
  std::shared_ptr<dao::Database> log_;
  Fdi scheme_;
  std::unique_ptr<dao::Recordset> rows_;
};

void FindFirst(benchmark::State& state) {
  SearchedLog log;
  for (auto _ : state) {
    logview::RowFilter filter = log.NewFilter();
    filter.SetQuery({"sch"});
    (void)filter.Read(kRowsPerSlice);
    if (filter.Shown(log.Rows())->RecordCount() == 0) state.SkipWithError("nothing found");
  }
}

void ReadAll(logview::RowFilter& filter) {
  while (!filter.Read(kRowsPerSlice)) {
  }
}

/// The log is read to its end; missing values, which are read in the same way, are not part of it.
void FindAll(benchmark::State& state) {
  SearchedLog log;
  for (auto _ : state) {
    logview::RowFilter filter = log.NewFilter();
    filter.SetQuery({"sch"});
    for (std::int64_t read = 0; read <= kLarge; read += kRowsPerSlice) (void)filter.Read(kRowsPerSlice);
    benchmark::DoNotOptimize(filter.Shown(log.Rows())->RecordCount());
  }
}

void FindAgain(benchmark::State& state) {
  SearchedLog log;
  logview::RowFilter filter = log.NewFilter();
  filter.SetQuery({"s"});
  ReadAll(filter);
  benchmark::DoNotOptimize(filter.Shown(log.Rows())->RecordCount());
  for (auto _ : state) {
    filter.SetQuery({"schm"});
    benchmark::DoNotOptimize(filter.Shown(log.Rows())->RecordCount());
  }
}

void BareFind(benchmark::State& state) {
  const SearchedLog log;
  ScanBare(state, log.Practice().LogFile(),
           "SELECT tXraySName, tXraySFirstname, tXrayDBirthday, tXraySRegio, tXraySType, tXraySDr, "
           "tXraySComment FROM TXray");
}

BENCHMARK(BareFind)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(7);
BENCHMARK(FindFirst)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(7);
BENCHMARK(FindAll)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(7);
BENCHMARK(FindAgain)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(7);

}  // namespace
}  // namespace varnlog::bench
