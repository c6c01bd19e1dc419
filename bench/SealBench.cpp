#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include "bench/Fakes.h"
#include "bench/Installation.h"
#include "core/Globals.h"
#include "db/dao/TableScan.h"
#include "db/dao/sqlite/TextFunctions.h"
#include "db/dao/text/Collation.h"
#include "intake/UpdateRun.h"
#include "seals/History.h"
#include "seals/Ledger.h"
#include "seals/LogSeals.h"
#include "seals/Verifier.h"

// What seals cost: intake and entries with and without them, verifying against reading.

namespace varnlog::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kLarge = 1'000'000;
constexpr int kEntries = 50'000;
constexpr std::uint64_t kSeed = 7;
constexpr int kOldYear = 2010;

class NoView final : public intake::UpdateView {
 public:
  core::MessageAnswer Show(const core::Message& /*message*/) override { return core::MessageAnswer::kOk; }
  void Beep() override {}
  void SetRecordCount(std::int64_t /*records*/) override {}
  void Advance(std::int64_t /*recordsDone*/) override {}
  void ShowNotices(const std::vector<std::string>& /*notices*/) override {}
};

/// A log of its own that is open for writing, with seals or without.
class OpenLog {
 public:
  OpenLog(const std::string& name, bool sealed) : practice_(name) {
    practice_.Clear();
    CopyInto(practice_.ProgramFolder() / "varnlog.md0", practice_.LogFile());
    Open(sealed);
  }

  void Open(bool sealed) {
    globals.ExchangeFileGl = practice_.ExchangeFile().string();
    globals.strDataFileGl = practice_.LogFile().string();
    globals.LogEngineGl = std::make_unique<db::CJetEngine>(engine_);
    globals.LogEngineGl->SetWorkgroupPath((practice_.ProgramFolder() / "system.mdw").string());
    globals.LogEngineGl->OpenWorkspace("MyWs", "Admin", "");
    if (globals.LogEngineGl->OpenDBInWorkspace(globals.strDataFileGl, false, false) != 0)
      throw std::runtime_error(globals.LogEngineGl->LastError());
    globals.LedgerGl.reset();
    if (!sealed) return;
    globals.LedgerGl = std::make_shared<seals::Ledger>(platform::CurrentAuthor(), clock_);
    static_cast<void>(seals::OpenLedger(Log(), globals.LedgerGl));
  }

  [[nodiscard]] dao::Database& Log() const { return *globals.LogEngineGl->Database(); }
  [[nodiscard]] const Installation& Practice() const { return practice_; }

  void TakeIn(std::int64_t records) {
    CopyInto(RecordFile(records, kSeed, kOldYear), practice_.ExchangeFile());
    Update();
  }
  void Update() {
    NoView view;
    const KeyTexts texts;
    static_cast<void>(intake::RunUpdate({globals, texts, clock_}, view));
  }

  core::Globals globals;

 private:
  Installation practice_;
  dao::DBEngine engine_;
  platform::SystemClock clock_;
};

void Enter(dao::Recordset& rows, std::int64_t exposure, const std::string& text) {
  rows.Seek("=", {exposure});
  rows.Edit();
  rows.Fields("tXraySComment").SetText(text);
  rows.Update();
}

void Intake(benchmark::State& state, bool sealed) {
  for (auto _ : state) {
    OpenLog log("seals", sealed);
    CopyInto(RecordFile(state.range(0), kSeed, kOldYear), log.Practice().ExchangeFile());
    const auto begin = std::chrono::steady_clock::now();
    log.Update();
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    state.counters["MB"] = static_cast<double>(fs::file_size(log.Practice().LogFile())) / 1e6;
  }
}
void IntakeSealed(benchmark::State& state) {
  Intake(state, true);
}
void IntakeUnsealed(benchmark::State& state) {
  Intake(state, false);
}

/// What the seal of an intake adds to the log, in percent.
void SealPercent(benchmark::State& state) {
  for (auto _ : state) {
    OpenLog log("seals", true);
    log.TakeIn(state.range(0));
    const std::vector<std::string> fields = {"tSealSMarks"};
    const auto scan = log.Log().Scan("TSeal", fields, {});
    double bytes = 0;
    while (scan->Next()) bytes += static_cast<double>(scan->Values()[0].text.size()) + 1000;
    const auto size = static_cast<double>(fs::file_size(log.Practice().LogFile()));
    state.SetIterationTime(100 * bytes / (size - bytes));
  }
}

/// A million exposures with 50,000 entries.
OpenLog& EditedLog() {
  static std::unique_ptr<OpenLog> log;
  if (log) return *log;
  log = std::make_unique<OpenLog>("edited", true);
  log->TakeIn(kLarge);
  dao::ChangeGroup changes = log->Log().BeginChanges();
  const auto rows = log->Log().OpenRecordset("TXray", dao::RecordsetType::kTable);
  rows->SetIndex("PrimaryKey");
  for (int i = 0; i < kEntries; ++i) Enter(*rows, 1 + i * (kLarge / kEntries), "entered");
  changes.Commit();
  return *log;
}

void VerifyAll(benchmark::State& state) {
  OpenLog& log = EditedLog();
  for (auto _ : state)
    if (!seals::Verify(log.Log()).IsSound()) state.SkipWithError("the log does not verify");
}

void BareRows(benchmark::State& state) {
  sqlite3* connection = nullptr;
  sqlite3_open_v2(EditedLog().Practice().LogFile().c_str(), &connection, SQLITE_OPEN_READONLY, nullptr);
  dao::RegisterText(connection);
  for (auto _ : state) {
    sqlite3_stmt* rows = nullptr;
    sqlite3_prepare_v2(connection, "SELECT * FROM TXray ORDER BY tXrayCulIntIDPk", -1, &rows, nullptr);
    while (sqlite3_step(rows) == SQLITE_ROW)
      for (int i = 0; i < sqlite3_column_count(rows); ++i)
        benchmark::DoNotOptimize(sqlite3_column_text(rows, i));
    sqlite3_finalize(rows);
  }
  sqlite3_close(connection);
}

void HistoryOfRow(benchmark::State& state) {
  OpenLog& log = EditedLog();
  std::int64_t exposure = 1;
  for (auto _ : state) {
    benchmark::DoNotOptimize(seals::ReadHistory(log.Log(), exposure));
    exposure = 1 + (exposure + 400'000) % kLarge;
  }
}

void Entry(benchmark::State& state, bool sealed) {
  OpenLog log("entry", sealed);
  log.TakeIn(10'000);
  const auto rows = log.Log().OpenRecordset("TXray", dao::RecordsetType::kTable);
  rows->SetIndex("PrimaryKey");
  std::int64_t count = 0;
  for (auto _ : state) {
    ++count;
    Enter(*rows, 1 + count % 10'000, std::to_string(count));
  }
}
void EntrySealed(benchmark::State& state) {
  Entry(state, true);
}
void EntryUnsealed(benchmark::State& state) {
  Entry(state, false);
}

void Once(benchmark::internal::Benchmark* runs) {
  runs->Arg(kLarge)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);
}

BENCHMARK(IntakeSealed)->Apply(Once);
BENCHMARK(IntakeUnsealed)->Apply(Once);
BENCHMARK(SealPercent)->Arg(kLarge)->UseManualTime()->Iterations(1);
BENCHMARK(VerifyAll)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);
BENCHMARK(BareRows)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);
BENCHMARK(HistoryOfRow)->Unit(benchmark::kMillisecond);
BENCHMARK(EntrySealed)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(50)->Repetitions(3);
BENCHMARK(EntryUnsealed)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(50)->Repetitions(3);

}  // namespace
}  // namespace varnlog::bench
