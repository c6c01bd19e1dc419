#include <chrono>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <random>
#include <string>

#include <benchmark/benchmark.h>

#include "bench/BenchServer.h"
#include "core/Selection.h"
#include "db/dao/DBEngine.h"
#include "dialogs/PatientSearch.h"

// A log on a server against bare statements on the same server.

namespace varnlog::bench {
namespace {

constexpr std::int64_t kPage = 60;
constexpr std::int64_t kLarge = 1'000'000;
constexpr std::int64_t kHuge = 10'000'000;
constexpr std::int64_t kRecent = 10'000;
constexpr std::uint64_t kSeed = 7;
constexpr int kOldYear = 2010;
constexpr int kRecentYear = 2022;
constexpr const char* kAll = "SELECT TXray.* From TXray ORDER BY TXray.tXrayTs DESC;";
constexpr const char* kByPatient =
    "SELECT TXray.* From TXray ORDER BY TXray.tXraySName , TXray.tXraySFirstname , TXray.tXrayDBirthday;";

BenchServer& Server() {
  return BenchServer::Instance();
}
/// A connection that stands in the log of that many rows.
std::unique_ptr<BareServer> Bare(std::int64_t rows) {
  static_cast<void>(Server().Filled(rows));
  auto bare = std::make_unique<BareServer>(Server().Folder());
  bare->Run("SET search_path TO " + BenchServer::Schema(rows));
  return bare;
}

template <typename Work>
void Time(benchmark::State& state, const Work& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
}

void TakeIn(benchmark::State& state, const Installation& practice) {
  // What was written before is not to be paid for now.
  BareServer(Server().Folder()).Run("CHECKPOINT");
  const Installation::Run run = practice.Ctl({"update"});
  if (run.status != 0) state.SkipWithError("varnlogctl update failed");
  state.SetIterationTime(run.seconds);
}

/// The same rows into a table with the same indexes.
void CopyFrom(benchmark::State& state, const BareServer& bare, const std::string& table,
              const std::string& rows) {
  const std::string file = Server().Folder() + "/data/rows.copy";
  bare.Run("COPY (" + rows + ") TO '" + file + "'");
  bare.Run("CHECKPOINT");
  Time(state, [&] { bare.Run("COPY " + table + " FROM '" + file + "'"); });
}

void ServerFresh(benchmark::State& state) {
  Installation practice("server-fresh");
  for (auto _ : state) {
    practice.Clear();
    Server().MakeLog(practice, "fresh");
    CopyInto(RecordFile(state.range(0), kSeed, kOldYear), practice.ExchangeFile());
    TakeIn(state, practice);
  }
}

void ServerCopyFresh(benchmark::State& state) {
  const auto bare = Bare(state.range(0));
  for (auto _ : state) {
    bare->Run("DROP TABLE IF EXISTS copied; CREATE TABLE copied (LIKE \"TXray\" INCLUDING ALL)");
    CopyFrom(state, *bare, "copied", "TABLE \"TXray\"");
  }
  bare->Run("DROP TABLE copied");
}

void ServerRecent(benchmark::State& state) {
  const Installation& practice = Server().Filled(state.range(0));
  const auto bare = Bare(state.range(0));
  static std::uint64_t seed = kSeed;
  for (auto _ : state) {
    CopyInto(RecordFile(kRecent, ++seed, kRecentYear), practice.ExchangeFile());
    TakeIn(state, practice);
  }
}

void ServerCopyRecent(benchmark::State& state) {
  const auto bare = Bare(state.range(0));
  bare->Run("CREATE TABLE copied (LIKE \"TXray\" INCLUDING ALL); INSERT INTO copied TABLE \"TXray\"");
  for (auto _ : state) {
    bare->Run(
        "DROP TABLE IF EXISTS picked; CREATE TEMP TABLE picked AS SELECT * FROM \"TXray\" ORDER BY "
        "\"tXrayTs\" DESC LIMIT " +
        std::to_string(kRecent) +
        "; UPDATE picked SET \"tXrayCulIntIDPk\" = \"tXrayCulIntIDPk\" + "
        "(SELECT max(\"tXrayCulIntIDPk\") FROM copied)");
    CopyFrom(state, *bare, "copied", "TABLE picked");
  }
  bare->Run("DROP TABLE copied");
}

void ServerAgain(benchmark::State& state) {
  const Installation& practice = Server().Filled(state.range(0));
  for (auto _ : state) {
    CopyInto(RecordFile(state.range(0), kSeed, kOldYear), practice.ExchangeFile());
    TakeIn(state, practice);
  }
}

void ReadRows(dao::Recordset& rows, std::int64_t count) {
  for (std::int64_t i = 0; i < count && !rows.IsEOF(); ++i, rows.MoveNext())
    for (std::size_t field = 0; field < rows.FieldCount(); ++field)
      benchmark::DoNotOptimize(rows.Fields(field).Text());
}

/// The log of so many rows as the program opens it.
std::shared_ptr<dao::Database> Open(std::int64_t rows) {
  static dao::DBEngine engine;
  const Installation& practice = Server().Filled(rows);
  engine.SetSystemDB((practice.ProgramFolder() / "system.mdw").string());
  static const auto workspace = engine.CreateWorkspace("Bench", "Admin", "");
  return workspace->OpenDatabase(practice.LogFile().string(), false, true);
}

void ServerFirstPage(benchmark::State& state) {
  const auto log = Open(state.range(0));
  for (auto _ : state) {
    const auto rows = log->OpenRecordset(kAll, dao::RecordsetType::kDynaset);
    ReadRows(*rows, kPage);
  }
}

/// A page of rows that are known by their ids, in one round trip.
void ServerBarePage(benchmark::State& state) {
  const auto bare = Bare(state.range(0));
  bare->Prepare("page", "SELECT * FROM \"TXray\" WHERE \"tXrayCulIntIDPk\" = ANY($1::integer[])");
  std::mt19937_64 random(1);
  for (auto _ : state) {
    const std::uint64_t first = random() % static_cast<std::uint64_t>(state.range(0) - kPage) + 1;
    std::string ids = "{" + std::to_string(first);
    for (std::uint64_t id = first + 1; id < first + kPage; ++id) ids += "," + std::to_string(id);
    if (bare->RunPrepared("page", {ids + "}"}) != kPage) state.SkipWithError("rows are missing");
  }
}

void ServerJump(benchmark::State& state) {
  const auto log = Open(state.range(0));
  const auto rows = log->OpenRecordset(kAll, dao::RecordsetType::kDynaset);
  rows->MoveLast();
  std::mt19937_64 random(1);
  const auto last = static_cast<std::uint64_t>(rows->RecordCount() - kPage);
  for (auto _ : state) {
    rows->SetAbsolutePosition(static_cast<std::int64_t>(random() % last));
    ReadRows(*rows, kPage);
  }
}

void ServerSort(benchmark::State& state) {
  const auto log = Open(state.range(0));
  for (auto _ : state) log->OpenRecordset(kByPatient, dao::RecordsetType::kDynaset)->MoveLast();
}

void ServerBareSort(benchmark::State& state) {
  const auto bare = Bare(state.range(0));
  for (auto _ : state)
    benchmark::DoNotOptimize(
        bare->CopyOut("COPY (SELECT \"tXrayCulIntIDPk\" FROM \"TXray\" ORDER BY \"tXraySName\" COLLATE jet, "
                      "\"tXraySFirstname\" COLLATE jet, \"tXrayDBirthday\", \"tXrayCulIntIDPk\") TO STDOUT"));
}

void ServerPatientSearch(benchmark::State& state) {
  const auto log = Open(state.range(0));
  const platform::ShortDate shortDate;
  for (auto _ : state) {
    core::Selection selection;
    benchmark::DoNotOptimize(dialogs::PatientSearch(selection, *log, shortDate).Search("Mü"));
  }
}

void ServerBareNames(benchmark::State& state) {
  const auto bare = Bare(state.range(0));
  for (auto _ : state)
    benchmark::DoNotOptimize(
        bare->CopyOut("COPY (SELECT DISTINCT \"tXraySName\", \"tXraySFirstname\" FROM \"TXray\") TO STDOUT"));
}

void Whole(benchmark::internal::Benchmark* runs) {
  runs->Arg(kLarge)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(2);
}
void Seconds(benchmark::internal::Benchmark* runs) {
  runs->Arg(kLarge)->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(4);
}
void Moments(benchmark::internal::Benchmark* runs) {
  runs->Arg(kLarge)->UseRealTime()->Unit(benchmark::kMicrosecond);
  // Ten million rows take minutes to make.
  if (std::getenv("VARNLOG_BENCH_HUGE") != nullptr) runs->Arg(kHuge);
}

BENCHMARK(ServerFresh)->Apply(Whole);
BENCHMARK(ServerCopyFresh)->Apply(Whole);
BENCHMARK(ServerRecent)->Apply(Whole)->Iterations(3);
BENCHMARK(ServerCopyRecent)->Apply(Whole)->Iterations(3);
BENCHMARK(ServerAgain)->Apply(Whole);
BENCHMARK(ServerFirstPage)->Apply(Moments);
BENCHMARK(ServerBarePage)->Apply(Moments);
BENCHMARK(ServerJump)->Apply(Moments);
BENCHMARK(ServerSort)->Apply(Seconds);
BENCHMARK(ServerBareSort)->Apply(Seconds);
BENCHMARK(ServerPatientSearch)->Apply(Seconds);
BENCHMARK(ServerBareNames)->Apply(Seconds);

}  // namespace
}  // namespace varnlog::bench
