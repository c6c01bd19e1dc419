#include <filesystem>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include "bench/Fakes.h"
#include "bench/Installation.h"
#include "bench/OldLogFile.h"
#include "legacy/Conversion.h"
#include "legacy/OldFile.h"
#include "legacy/OldLog.h"

// Old logs: reading them against reading the same rows from SQLite, and converting them against reading them.

namespace varnlog::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kRows = 20'000;

void ReadOld(benchmark::State& state) {
  std::error_code error;
  const auto content = legacy::ReadOldFile(OldLogFile(kRows), error);
  for (auto _ : state) {
    const auto log = legacy::OldLog::Open(legacy::AsBytes(*content));
    legacy::FaultList faults;
    std::size_t characters = 0;
    const auto count = log->ReadExposures(
        [&](const legacy::JetRow& row) {
          for (const auto& value : row.values) {
            if (const auto* text = std::get_if<std::string>(&value)) characters += text->size();
          }
          return true;
        },
        faults);
    benchmark::DoNotOptimize(characters);
    if (count.whole != kRows || !faults.IsEmpty()) state.SkipWithError("not all rows were read");
  }
  state.SetItemsProcessed(state.iterations() * kRows);
}

class Silent final : public legacy::ConversionView {
 public:
  void Begin(legacy::ConversionStep /*step*/, std::int64_t /*exposures*/) override {}
  bool Advance(std::int64_t /*exposuresDone*/) override { return true; }
  core::MessageAnswer Show(const core::Message& /*message*/) override { return core::MessageAnswer::kYes; }
  void Beep() override {}
};

/// Converts the old log into `target`; false when that failed.
bool ConvertOnce(const Installation& practice, const fs::path& target) {
  dao::DBEngine engine;
  engine.SetSystemDB((practice.ProgramFolder() / "system.mdw").string());
  const KeyTexts texts;
  Silent view;
  const platform::Author author;
  const platform::SystemClock clock;
  const auto result =
      legacy::ConvertTo({engine, texts, practice.ProgramFolder() / "varnlog.md0", author, clock},
                        OldLogFile(kRows), target, {}, view);
  return result.rows == kRows;
}

void Convert(benchmark::State& state) {
  const Installation practice("convert");
  const fs::path target = practice.LogFile();
  for (auto _ : state) {
    if (!ConvertOnce(practice, target)) state.SkipWithError("the conversion failed");
    state.PauseTiming();
    fs::remove(target);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kRows);
}

/// Every value of the current row as what it is; the texts' characters.
std::size_t TakeValues(sqlite3_stmt* row, int columns) {
  std::size_t characters = 0;
  for (int i = 0; i < columns; ++i) {
    if (sqlite3_column_type(row, i) == SQLITE_TEXT) {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, i));
      const std::string copy(text, static_cast<std::size_t>(sqlite3_column_bytes(row, i)));
      characters += copy.size();
    } else {
      characters += static_cast<std::size_t>(sqlite3_column_int64(row, i) & 1);
    }
  }
  return characters;
}

struct Closer {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, Closer>;
using Statement = std::unique_ptr<sqlite3_stmt, Closer>;

Database OpenBare(const fs::path& file, int flags) {
  sqlite3* database = nullptr;
  if (sqlite3_open_v2(file.c_str(), &database, flags, nullptr) != SQLITE_OK) throw std::bad_alloc();
  return Database(database);
}

Statement Prepare(const Database& database, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(database.get(), sql.c_str(), -1, &statement, nullptr);
  return Statement(statement);
}

std::int64_t ReadAll(const fs::path& file) {
  const Database database = OpenBare(file, SQLITE_OPEN_READONLY);
  const Statement rows = Prepare(database, "SELECT * FROM TXray");
  std::size_t characters = 0;
  std::int64_t count = 0;
  for (; sqlite3_step(rows.get()) == SQLITE_ROW; ++count) {
    characters += TakeValues(rows.get(), sqlite3_column_count(rows.get()));
  }
  benchmark::DoNotOptimize(characters);
  return count;
}

std::string FieldNames(sqlite3_stmt* rows) {
  std::string names;
  for (int i = 0; i < sqlite3_column_count(rows); ++i) {
    names += (i == 0 ? "" : ",") + std::string(sqlite3_column_name(rows, i));
  }
  return names;
}

/// What no conversion can do without: the rows into a new table, its indexes, and all of it read again.
std::int64_t CopyBare(const fs::path& source, const fs::path& target) {
  const Database from = OpenBare(source, SQLITE_OPEN_READONLY);
  const Statement rows = Prepare(from, "SELECT * FROM TXray");
  const int columns = sqlite3_column_count(rows.get());
  {
    const Database into = OpenBare(target, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    const auto run = [&](const std::string& sql) {
      sqlite3_exec(into.get(), sql.c_str(), nullptr, nullptr, nullptr);
    };
    run("PRAGMA page_size=16384; PRAGMA synchronous=OFF; PRAGMA cache_size=-65536; BEGIN");
    std::string fields = FieldNames(rows.get());
    run("CREATE TABLE TXray (" + fields.insert(fields.find(','), " INTEGER PRIMARY KEY") + ")");
    std::string marks = "?";
    for (int i = 1; i < columns; ++i) marks += ",?";
    const Statement insert = Prepare(into, "INSERT INTO TXray VALUES (" + marks + ")");
    while (sqlite3_step(rows.get()) == SQLITE_ROW) {
      for (int i = 0; i < columns; ++i)
        sqlite3_bind_value(insert.get(), i + 1, sqlite3_column_value(rows.get(), i));
      sqlite3_step(insert.get());
      sqlite3_reset(insert.get());
    }
    run("CREATE INDEX i ON TXray (tXrayTs, tXraySName, tXraySFirstname, tXrayDBirthday)");
    run("CREATE INDEX t ON TXray (tXrayTs); COMMIT");
  }
  return ReadAll(target);
}

void BareCopy(benchmark::State& state) {
  const Installation practice("barecopy");
  if (!ConvertOnce(practice, practice.LogFile())) return state.SkipWithError("the conversion failed");
  const fs::path target = practice.ProgramFolder() / "copy.mdb";
  for (auto _ : state) {
    if (CopyBare(practice.LogFile(), target) != kRows) state.SkipWithError("not all rows were read");
    state.PauseTiming();
    fs::remove(target);
    state.ResumeTiming();
  }
}

void ReadNew(benchmark::State& state) {
  const Installation practice("readnew");
  if (!ConvertOnce(practice, practice.LogFile())) return state.SkipWithError("the conversion failed");
  for (auto _ : state) {
    if (ReadAll(practice.LogFile()) != kRows) state.SkipWithError("not all rows were read");
  }
  state.SetItemsProcessed(state.iterations() * kRows);
}

BENCHMARK(ReadOld)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ReadNew)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BareCopy)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(Convert)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace varnlog::bench
