#include "bench/ServerEntries.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <stdexcept>
#include <thread>
#include <unistd.h>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/BenchServer.h"
#include "core/Globals.h"
#include "platform/Clock.h"
#include "seals/Ledger.h"
#include "seals/LogSeals.h"
#include "seals/Verifier.h"

// Eight programs that enter values at once, against eight bare connections that write the same rows.

namespace varnlog::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kPrograms = 8;
constexpr int kSeconds = 60;
constexpr int kExposures = 10'000;
constexpr int kRows = 1000;  // that are written to

int RowFor(std::mt19937& random) {
  return static_cast<int>(random() % kRows) + 1;
}

/// A log of its own on the server, as the program opens it.
class OpenLog {
 public:
  explicit OpenLog(const std::string& link) {
    globals_.strDataFileGl = link;
    globals_.LogEngineGl = std::make_unique<db::CJetEngine>(engine_);
    const auto installation = std::filesystem::path(link).parent_path().parent_path();
    globals_.LogEngineGl->SetWorkgroupPath((installation / "program" / "system.mdw").string());
    globals_.LogEngineGl->OpenWorkspace("MyWs", "Admin", "");
    if (globals_.LogEngineGl->OpenDBInWorkspace(link, false, false) != 0)
      throw std::runtime_error(globals_.LogEngineGl->LastError());
    globals_.LedgerGl = std::make_shared<seals::Ledger>(platform::CurrentAuthor(), clock_);
    static_cast<void>(seals::OpenLedger(Log(), globals_.LedgerGl));
  }
  [[nodiscard]] dao::Database& Log() const { return *globals_.LogEngineGl->Database(); }

 private:
  dao::DBEngine engine_;
  platform::SystemClock clock_;
  core::Globals globals_;
};

/// True when the change was kept, false when somebody else was first.
bool CountUp(dao::Recordset& rows, int row) {
  try {
    rows.Seek("=", {std::int64_t{row}});
    rows.Edit();
    const std::string before(rows.Fields("tXraySComment").Text());
    rows.Fields("tXraySComment").SetText(std::to_string(before.empty() ? 1 : std::stoll(before) + 1));
    rows.Update();
    return true;
  } catch (const dao::EngineError& error) {
    if (error.number() != dao::ErrorNumber::kDataChanged) throw;
    return false;
  }
}

const Installation& MakeLog(const std::string& schema) {
  static std::vector<std::unique_ptr<Installation>> practices;
  practices.push_back(std::make_unique<Installation>(schema));
  const Installation& practice = *practices.back();
  BenchServer::Instance().MakeLog(practice, schema);
  CopyInto(RecordFile(kExposures, 7, 2010), practice.ExchangeFile());
  if (practice.Ctl({"update"}).status != 0) throw std::runtime_error("varnlogctl update failed");
  return practice;
}

std::int64_t Counted(const std::string& schema) {
  return std::stoll(BareServer(BenchServer::Instance().Folder())
                        .Run("SELECT coalesce(sum(\"tXraySComment\"::bigint), 0) FROM " + schema +
                             ".\"TXray\" WHERE \"tXraySComment\" <> ''"));
}

std::int64_t RunPrograms(const std::string& link) {
  const std::string command = "/proc/" + std::to_string(getpid()) + "/exe " + kEnterOption + " " + link +
                              " " + std::to_string(kSeconds);
  std::vector<std::FILE*> programs;
  for (int i = 0; i < kPrograms; ++i) programs.push_back(popen(command.c_str(), "r"));
  std::int64_t entries = 0;
  bool failed = false;
  for (std::FILE* const program : programs) {
    std::array<char, 32> answer{};
    if (std::fgets(answer.data(), answer.size(), program) != nullptr) entries += std::atoll(answer.data());
    failed = pclose(program) != 0 || failed;
  }
  if (failed) throw std::runtime_error("a program that enters values failed");
  return entries;
}

/// Seconds that one change takes, of all programs together.
void ServerEntries(benchmark::State& state) {
  for (auto _ : state) {
    const Installation& practice = MakeLog("entries");
    const std::int64_t entries = RunPrograms(practice.LogFile().string());
    if (entries != Counted("entries")) state.SkipWithError("a change was lost");
    if (!seals::Verify(OpenLog(practice.LogFile().string()).Log()).IsSound())
      state.SkipWithError("the log does not verify");
    state.SetIterationTime(static_cast<double>(kSeconds) / static_cast<double>(entries));
  }
}

/// One change with its history and seal, all that is known beforehand put in.
std::string BareEntry(int row) {
  const std::string id = std::to_string(row);
  return "BEGIN; SELECT pg_advisory_xact_lock(11); INSERT INTO \"THistory\" SELECT (SELECT value + 1 FROM "
         "varnlog_state WHERE name = 'THistory'), " +
         id +
         ", 'tXraySComment', \"tXraySComment\", coalesce(\"tXraySComment\", '0')::int + 1, 'comment', "
         "(SELECT "
         "max(\"tSealCulNrPk\") + 1 FROM \"TSeal\") FROM \"TXray\" WHERE \"tXrayCulIntIDPk\" = " +
         id +
         "; UPDATE \"TXray\" SET \"tXraySComment\" = coalesce(\"tXraySComment\", '0')::int + 1 WHERE "
         "\"tXrayCulIntIDPk\" = " +
         id +
         "; INSERT INTO \"TSeal\" (\"tSealCulNrPk\", \"tSealSKind\", \"tSealDTime\", \"tSealSAccount\", "
         "\"tSealSPlace\", \"tSealSProgram\", \"tSealSHistDigest\", \"tSealSDigest\") SELECT "
         "max(\"tSealCulNrPk\") + 1, 'entry', '2026-01-01 00:00:00', 'account', 'place', 'program', "
         "repeat('0', 64), repeat('0', 64) FROM \"TSeal\"; UPDATE varnlog_state SET value = value + 1 WHERE "
         "name IN ('THistory', 'TSeal', 'changes'); NOTIFY bare; COMMIT";
}

void ServerBareEntries(benchmark::State& state) {
  for (auto _ : state) {
    static_cast<void>(MakeLog("bareentries"));
    std::vector<std::int64_t> entries(kPrograms);
    std::vector<std::thread> connections;
    for (unsigned i = 0; i < kPrograms; ++i)
      connections.emplace_back([&entries, i] {
        const BareServer bare(BenchServer::Instance().Folder());
        bare.Run("SET search_path TO bareentries");
        std::mt19937 random(i);
        const auto end = Clock::now() + std::chrono::seconds(kSeconds);
        for (; Clock::now() < end; ++entries[i]) bare.Run(BareEntry(RowFor(random)));
      });
    for (std::thread& connection : connections) connection.join();
    std::int64_t all = 0;
    for (const std::int64_t each : entries) all += each;
    state.SetIterationTime(static_cast<double>(kSeconds) / static_cast<double>(all));
  }
}

BENCHMARK(ServerEntries)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(1)->Repetitions(1);
BENCHMARK(ServerBareEntries)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(1)->Repetitions(1);

}  // namespace

int EnterValues(const std::string& link, int seconds) {
  const OpenLog log(link);
  const auto rows = log.Log().OpenRecordset("TXray", dao::RecordsetType::kTable);
  rows->SetIndex("PrimaryKey");
  std::mt19937 random(static_cast<unsigned>(getpid()));
  std::int64_t entries = 0;
  const auto end = Clock::now() + std::chrono::seconds(seconds);
  while (Clock::now() < end)
    if (CountUp(*rows, RowFor(random))) ++entries;
  std::printf("%lld\n", static_cast<long long>(entries));
  return 0;
}

}  // namespace varnlog::bench
