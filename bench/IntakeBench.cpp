#include <limits>

#include <benchmark/benchmark.h>

#include "bench/Installation.h"
#include "bench/RawInsert.h"
#include "intake/CPAXTOTokens.h"

// Whole runs of `varnlogctl update` against the bare insertion of the same rows.

namespace varnlog::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kRecent = 10'000;
constexpr std::uint64_t kSeed = 7;
constexpr int kOldYear = 2010;
constexpr int kRecentYear = 2024;

void RunUpdate(benchmark::State& state, Installation& practice) {
  const Installation::Run run = practice.Ctl({"update"});
  if (run.status != 0) state.SkipWithError("varnlogctl update failed");
  state.SetIterationTime(run.seconds);
  state.counters["peak_MB"] = std::max(state.counters["peak_MB"].value, run.peakMegabytes);
}

void Raw(benchmark::State& state, const fs::path& records) {
  const Installation practice("raw");
  for (auto _ : state) {
    const fs::path database = practice.LogFile();
    fs::remove(database);
    const auto begin = std::chrono::steady_clock::now();
    benchmark::DoNotOptimize(RawInsert(records, database));
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void RawFresh(benchmark::State& state) {
  Raw(state, RecordFile(state.range(0), kSeed, kOldYear));
}
void RawRecent(benchmark::State& state) {
  Raw(state, RecordFile(state.range(0), kSeed + 1, kRecentYear));
}

void Parse(benchmark::State& state) {
  const fs::path& records = RecordFile(state.range(0), kSeed, kOldYear);
  for (auto _ : state) {
    intake::CPAXTOTokens reader(platform::CodePage::Oem("D"));
    if (!reader.OpenMailslot(records.string())) state.SkipWithError("cannot read");
    (void)reader.ReadMailslot(std::numeric_limits<std::int32_t>::max());
    intake::CToken token;
    for (std::int64_t i = 0; i < reader.Count(); ++i) benchmark::DoNotOptimize(reader.Item(i, token));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Fresh(benchmark::State& state) {
  Installation practice("fresh");
  for (auto _ : state) {
    practice.Clear();
    CopyInto(RecordFile(state.range(0), kSeed, kOldYear), practice.ExchangeFile());
    RunUpdate(state, practice);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void RecentIntoFull(benchmark::State& state) {
  Installation practice("recent");
  const fs::path filled = FilledPractice(state.range(0)).LogFile();
  for (auto _ : state) {
    practice.Clear();
    CopyInto(filled, practice.LogFile());
    CopyInto(RecordFile(kRecent, kSeed + 1, kRecentYear), practice.ExchangeFile());
    RunUpdate(state, practice);
  }
}

void SameAgain(benchmark::State& state) {
  Installation practice("again");
  CopyInto(FilledPractice(state.range(0)).LogFile(), practice.LogFile());
  for (auto _ : state) {
    CopyInto(RecordFile(state.range(0), kSeed, kOldYear), practice.ExchangeFile());
    RunUpdate(state, practice);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

constexpr std::int64_t kSmall = 100'000;
constexpr std::int64_t kLarge = 1'000'000;

void Small(benchmark::internal::Benchmark* runs) {
  runs->Arg(kSmall)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(9);
}
void Large(benchmark::internal::Benchmark* runs) {
  runs->Arg(kLarge)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);
}

BENCHMARK(RawFresh)->Apply(Small);
BENCHMARK(RawFresh)->Apply(Large);
BENCHMARK(RawRecent)->Arg(kRecent)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(Parse)
    ->Arg(kSmall)
    ->Arg(kLarge)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->Repetitions(3)
    ->UseRealTime();
BENCHMARK(Fresh)->Apply(Small);
BENCHMARK(Fresh)->Apply(Large);
BENCHMARK(RecentIntoFull)
    ->Arg(kSmall)
    ->Arg(kLarge)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
BENCHMARK(SameAgain)->Apply(Small);
BENCHMARK(SameAgain)->Apply(Large);

}  // namespace
}  // namespace varnlog::bench
