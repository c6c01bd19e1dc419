#include <array>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include "bench/Installation.h"
#include "db/dao/DBEngine.h"
#include "db/dao/sqlite/TextFunctions.h"
#include "db/dao/text/Collation.h"
#include "dialogs/PatientSearch.h"
#include "platform/ShortDate.h"
#include "start/Language.h"

// Record sets over a big log against bare statements on the same file.

namespace varnlog::bench {
namespace {

namespace fs = std::filesystem;
using core::literals::operator""_key;

constexpr std::int64_t kPage = 60;
constexpr std::int64_t kLarge = 1'000'000;
constexpr const char* kAll = "SELECT TXray.* From TXray ORDER BY TXray.tXrayTs DESC;";
constexpr const char* kByPatient =
    "SELECT TXray.* From TXray ORDER BY TXray.tXraySName , TXray.tXraySFirstname , TXray.tXrayDBirthday;";
constexpr const char* kByPatientDown =
    "SELECT TXray.* From TXray ORDER BY TXray.tXraySName DESC , TXray.tXraySFirstname DESC , "
    "TXray.tXrayDBirthday DESC;";
constexpr const char* kByType = "SELECT TXray.* From TXray ORDER BY TXray.tXraySType;";
constexpr const char* kPeriodAndType =
    "SELECT TXray.* From TXray WHERE (((TXray.tXrayTs) Between #1/1/2012# AND #12/31/2012 11:59:59 PM#) AND "
    "TXray.tXraySType = 'XI') ORDER BY TXray.tXrayTs DESC;";

/// A log of `rows` exposures and a bare connection to it.
class FilledLog {
 public:
  static FilledLog& Of(std::int64_t rows) {
    static std::map<std::int64_t, std::unique_ptr<FilledLog>> logs;
    auto& log = logs[rows];
    if (!log) log = std::make_unique<FilledLog>(rows);
    return *log;
  }

  explicit FilledLog(std::int64_t rows) : practice_(FilledPractice(rows)) {
    engine_.SetSystemDB((practice_.ProgramFolder() / "system.mdw").string());
    workspace_ = engine_.CreateWorkspace("Bench", "Admin", "");
    if (sqlite3_open_v2(practice_.LogFile().c_str(), &bare_, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
      throw std::runtime_error("cannot open");
    }
    dao::RegisterText(bare_);
  }
  ~FilledLog() { sqlite3_close(bare_); }
  FilledLog(const FilledLog&) = delete;
  FilledLog& operator=(const FilledLog&) = delete;

  /// Opened anew, so that nothing is remembered from before.
  [[nodiscard]] std::shared_ptr<dao::Database> Open() {
    return workspace_->OpenDatabase(practice_.LogFile().string(), false, true);
  }
  [[nodiscard]] sqlite3* Bare() const { return bare_; }

 private:
  const Installation& practice_;
  dao::DBEngine engine_;
  std::shared_ptr<dao::Workspace> workspace_;
  sqlite3* bare_ = nullptr;
};

class BareStatement {
 public:
  BareStatement(sqlite3* connection, const char* sql) {
    if (sqlite3_prepare_v2(connection, sql, -1, &statement_, nullptr) != SQLITE_OK) {
      throw std::runtime_error(sqlite3_errmsg(connection));
    }
  }
  ~BareStatement() { sqlite3_finalize(statement_); }
  BareStatement(const BareStatement&) = delete;
  BareStatement& operator=(const BareStatement&) = delete;
  [[nodiscard]] sqlite3_stmt* get() const { return statement_; }
  [[nodiscard]] bool Step() const { return sqlite3_step(statement_) == SQLITE_ROW; }
  /// Reads every column of the current row.
  void ReadRow() const {
    for (int i = 0; i < sqlite3_column_count(statement_); ++i) {
      benchmark::DoNotOptimize(sqlite3_column_text(statement_, i));
    }
  }

 private:
  sqlite3_stmt* statement_ = nullptr;
};

void ReadRows(dao::Recordset& rows, std::int64_t count) {
  for (std::int64_t i = 0; i < count && !rows.IsEOF(); ++i, rows.MoveNext()) {
    for (std::size_t field = 0; field < rows.FieldCount(); ++field) {
      benchmark::DoNotOptimize(rows.Fields(field).Text());
    }
  }
}

void OpenAndReadPage(benchmark::State& state) {
  const auto log = FilledLog::Of(state.range(0)).Open();
  for (auto _ : state) {
    const auto rows = log->OpenRecordset(kAll, dao::RecordsetType::kDynaset);
    ReadRows(*rows, kPage);
  }
}

void AllIds(benchmark::State& state) {
  const auto log = FilledLog::Of(state.range(0)).Open();
  for (auto _ : state) {
    const auto rows = log->OpenRecordset(kAll, dao::RecordsetType::kDynaset);
    while (!rows->Populate(20'000)) continue;
    if (rows->RecordCount() == 0) state.SkipWithError("no rows");
  }
}

void BareIds(benchmark::State& state) {
  const FilledLog& log = FilledLog::Of(state.range(0));
  for (auto _ : state) {
    const BareStatement ids(log.Bare(), "SELECT tXrayCulIntIDPk FROM TXray ORDER BY tXrayTs DESC");
    while (ids.Step()) benchmark::DoNotOptimize(sqlite3_column_int64(ids.get(), 0));
  }
}

void JumpAndReadPage(benchmark::State& state) {
  const auto log = FilledLog::Of(state.range(0)).Open();
  const auto rows = log->OpenRecordset(kAll, dao::RecordsetType::kDynaset);
  rows->MoveLast();
  std::mt19937_64 random(1);
  const auto last = static_cast<std::uint64_t>(rows->RecordCount() - kPage);
  for (auto _ : state) {
    rows->SetAbsolutePosition(static_cast<std::int64_t>(random() % last));
    ReadRows(*rows, kPage);
  }
}

void BarePage(benchmark::State& state) {
  const FilledLog& log = FilledLog::Of(state.range(0));
  const BareStatement row(log.Bare(), "SELECT * FROM TXray WHERE tXrayCulIntIDPk = ?");
  const BareStatement begin(log.Bare(), "BEGIN");
  const BareStatement end(log.Bare(), "COMMIT");
  std::mt19937_64 random(1);
  const auto last = static_cast<std::uint64_t>(state.range(0) - kPage);
  for (auto _ : state) {
    const auto first = static_cast<std::int64_t>(random() % last) + 1;
    (void)begin.Step();
    sqlite3_reset(begin.get());
    for (std::int64_t id = first; id < first + kPage; ++id) {
      sqlite3_bind_int64(row.get(), 1, id);
      if (row.Step()) row.ReadRow();
      sqlite3_reset(row.get());
    }
    (void)end.Step();
    sqlite3_reset(end.get());
  }
}

void Sort(benchmark::State& state, const char* sql) {
  FilledLog& filled = FilledLog::Of(kLarge);
  for (auto _ : state) {
    const auto log = filled.Open();
    const auto rows = log->OpenRecordset(sql, dao::RecordsetType::kDynaset);
    rows->MoveLast();
    benchmark::DoNotOptimize(rows->RecordCount());
  }
}
void SortByPatient(benchmark::State& state) {
  Sort(state, kByPatient);
}
void SortByType(benchmark::State& state) {
  Sort(state, kByType);
}

/// The same rows in the two directions by turns, as clicks on one heading ask for them.
void SortReversed(benchmark::State& state) {
  const auto log = FilledLog::Of(kLarge).Open();
  bool descending = true;
  log->OpenRecordset(kByPatient, dao::RecordsetType::kDynaset)->MoveLast();
  for (auto _ : state) {
    log->OpenRecordset(descending ? kByPatientDown : kByPatient, dao::RecordsetType::kDynaset)->MoveLast();
    descending = !descending;
  }
}

void Scan(benchmark::State& state, const char* sql) {
  const FilledLog& log = FilledLog::Of(kLarge);
  for (auto _ : state) {
    const BareStatement scan(log.Bare(), sql);
    while (scan.Step()) scan.ReadRow();
  }
}
void BareNameScan(benchmark::State& state) {
  Scan(state, "SELECT tXraySName, tXraySFirstname FROM TXray");
}
void BareTypeScan(benchmark::State& state) {
  Scan(state, "SELECT tXraySType FROM TXray");
}
void BareSort(benchmark::State& state) {
  Scan(state,
       "SELECT tXrayCulIntIDPk FROM TXray ORDER BY tXraySName COLLATE JET, tXraySFirstname COLLATE JET, "
       "tXrayDBirthday");
}

void PeriodAndType(benchmark::State& state) {
  Sort(state, kPeriodAndType);
}
void BarePeriodAndType(benchmark::State& state) {
  Scan(state,
       "SELECT tXrayCulIntIDPk FROM TXray WHERE tXrayTs BETWEEN '2012-01-01 00:00:00' AND '2012-12-31 "
       "23:59:59' "
       "AND tXraySType = 'XI' ORDER BY tXrayTs DESC");
}

void PatientSearchFirst(benchmark::State& state) {
  FilledLog& filled = FilledLog::Of(kLarge);
  const platform::ShortDate shortDate;
  for (auto _ : state) {
    const auto log = filled.Open();
    core::Globals globals;
    benchmark::DoNotOptimize(dialogs::PatientSearch(globals, *log, shortDate).Search("Mü"));
  }
}

/// Some of the patients by how their names begin, some by what their names hold, and all of them.
constexpr std::array<const char*, 3> kFurtherSearches = {"Sch", "*berg*", ""};

void PatientSearchAgain(benchmark::State& state) {
  const auto log = FilledLog::Of(kLarge).Open();
  const platform::ShortDate shortDate;
  core::Globals globals;
  dialogs::PatientSearch search(globals, *log, shortDate);
  (void)search.Search("Mü");
  const std::string text = kFurtherSearches.at(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(search.Search(text));
}

void GetText(benchmark::State& state) {
  core::Globals globals;
  globals.ProgramFolderGl = VARNLOG_PROGRAM_DIR;
  start::Language texts(globals);
  if (!texts.InitLanguage()) state.SkipWithError("no texts");
  for (auto _ : state) {
    for (int i = 0; i < 50'000; ++i) {
      benchmark::DoNotOptimize(texts.GetText("MN_CAPTION"_key));
      benchmark::DoNotOptimize(texts.GetText("RC_PREGYES"_key));
    }
  }
}

void BareText(benchmark::State& state) {
  sqlite3* opened = nullptr;
  sqlite3_open_v2((fs::path(VARNLOG_PROGRAM_DIR) / "verbalo.mdb").c_str(), &opened, SQLITE_OPEN_READONLY,
                  nullptr);
  dao::RegisterText(opened);
  {
    const BareStatement text(opened,
                             "SELECT TResSText FROM TRes WHERE TResSLangKey = ? AND TResSTextKey = ?");
    const auto look = [&text](const char* key) {
      sqlite3_bind_text(text.get(), 1, "D", -1, SQLITE_STATIC);
      sqlite3_bind_text(text.get(), 2, key, -1, SQLITE_STATIC);
      if (!text.Step()) throw std::runtime_error("no text");
      std::string result(reinterpret_cast<const char*>(sqlite3_column_text(text.get(), 0)));
      benchmark::DoNotOptimize(result);
      sqlite3_reset(text.get());
    };
    for (auto _ : state) {
      for (int i = 0; i < 50'000; ++i) {
        look("MN_CAPTION");
        look("RC_PREGYES");
      }
    }
  }
  sqlite3_close(opened);
}

/// What reads much memory has many turns: one of them finds the processor's cache left alone.
constexpr int kTurns = 15;

BENCHMARK(OpenAndReadPage)->Arg(10'000)->Arg(kLarge)->Unit(benchmark::kMillisecond);
BENCHMARK(AllIds)->Arg(kLarge)->Unit(benchmark::kMillisecond)->Repetitions(kTurns);
BENCHMARK(BareIds)->Arg(kLarge)->Unit(benchmark::kMillisecond)->Repetitions(kTurns);
BENCHMARK(JumpAndReadPage)->Arg(kLarge)->Unit(benchmark::kMicrosecond);
BENCHMARK(BarePage)->Arg(kLarge)->Unit(benchmark::kMicrosecond);
BENCHMARK(SortByPatient)->Unit(benchmark::kMillisecond);
BENCHMARK(SortReversed)->Unit(benchmark::kMillisecond);
BENCHMARK(SortByType)->Unit(benchmark::kMillisecond);
BENCHMARK(BareNameScan)->Unit(benchmark::kMillisecond)->Repetitions(kTurns);
BENCHMARK(BareTypeScan)->Unit(benchmark::kMillisecond);
BENCHMARK(BareSort)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(PeriodAndType)->Unit(benchmark::kMillisecond);
BENCHMARK(BarePeriodAndType)->Unit(benchmark::kMillisecond);
BENCHMARK(PatientSearchFirst)->Unit(benchmark::kMillisecond)->Repetitions(kTurns);
BENCHMARK(PatientSearchAgain)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(GetText)->Unit(benchmark::kMillisecond);
BENCHMARK(BareText)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace varnlog::bench
