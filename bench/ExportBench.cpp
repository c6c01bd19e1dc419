#include <memory>
#include <stdexcept>
#include <vector>
#include <xlsxwriter.h>

#include <benchmark/benchmark.h>

#include "bench/Fakes.h"
#include "bench/Installation.h"
#include "db/dao/DBEngine.h"
#include "exports/Export.h"
#include "logview/MeasuredValue.h"
#include "start/Language.h"

// A workbook against the library alone, given the same cells; CSV against the storage's own shell.

namespace varnlog::bench {
namespace {

constexpr std::int64_t kUsual = 100'000;
constexpr std::int64_t kFew = 10'000;
constexpr const char* kAll = "SELECT TXray.* From TXray ORDER BY TXray.tXrayTs DESC;";

class NoProgress final : public exports::ExportProgress {
 public:
  bool Exported(std::int64_t, std::int64_t) override { return true; }
};

/// The rows of a log as they are exported.
class ExportedLog {
 public:
  explicit ExportedLog(std::int64_t rows) : practice_(FilledPractice(rows)) {
    engine_.SetSystemDB((practice_.ProgramFolder() / "system.mdw").string());
    workspace_ = engine_.CreateWorkspace("Bench", "Admin", "");
    log_ = workspace_->OpenDatabase(practice_.LogFile().string(), false, true);
    rows_ = log_->OpenRecordset(kAll);
    source_ = exports::MakeDisplayedRows(*rows_, {texts_, scheme_, shortDate_}, exports::AllColumns());
  }

  [[nodiscard]] std::string File() const { return (practice_.ProgramFolder() / "export.xlsx").string(); }
  void Export() {
    NoProgress progress;
    const exports::ExportJob job{*rows_, *source_, texts_, "Praxis", "Alles", "1.1.2024"};
    if (!exports::Export(job, {.file = File(), .ifTaken = platform::IfTaken::kReplace, .log = {}},
                         progress)) {
      throw std::runtime_error("no export");
    }
  }
  [[nodiscard]] std::vector<exports::Row> Cells() {
    std::vector<exports::Row> cells;
    exports::Row row;
    for (rows_->MoveFirst(); !rows_->IsEOF(); rows_->MoveNext()) {
      source_->Read(row);
      cells.push_back(row);
    }
    return cells;
  }

 private:
  const Installation& practice_;
  dao::DBEngine engine_;
  std::shared_ptr<dao::Workspace> workspace_;
  std::shared_ptr<dao::Database> log_;
  KeyTexts texts_;
  Fdi scheme_;
  platform::ShortDate shortDate_;
  std::unique_ptr<dao::Recordset> rows_;
  std::unique_ptr<exports::RowSource> source_;
};

void ExportXlsx(benchmark::State& state) {
  ExportedLog log(state.range(0));
  for (auto _ : state) log.Export();
}

/// A cell as the library takes it.
struct BareCell {
  const char* text = nullptr;
  double number = 0;
};

std::vector<BareCell> BareCells(const std::vector<exports::Row>& rows) {
  using Kind = exports::Cell::Kind;
  std::vector<BareCell> bare;
  for (const exports::Row& row : rows) {
    for (const exports::Cell& cell : row) {
      const auto measured = logview::ReadMeasured(cell.text);
      const bool isText = cell.kind == Kind::kText || (cell.kind == Kind::kMeasured && !measured);
      const double days = static_cast<double>(cell.date.SecondsSinceEpoch()) / 86'400;
      bare.push_back({isText ? cell.text.c_str() : nullptr, measured ? measured->value : days});
    }
  }
  return bare;
}

void BareXlsx(benchmark::State& state) {
  ExportedLog log(state.range(0));
  const std::vector<exports::Row> rows = log.Cells();
  const std::vector<BareCell> cells = BareCells(rows);
  const auto columns = rows.front().size();
  for (auto _ : state) {
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    lxw_workbook* const book = workbook_new_opt(log.File().c_str(), &options);
    lxw_worksheet* const sheet = workbook_add_worksheet(book, nullptr);
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const auto row = static_cast<lxw_row_t>(i / columns);
      const auto column = static_cast<lxw_col_t>(i % columns);
      if (cells[i].text == nullptr) {
        worksheet_write_number(sheet, row, column, cells[i].number, nullptr);
      } else if (*cells[i].text != '\0') {
        worksheet_write_string(sheet, row, column, cells[i].text, nullptr);
      }
    }
    workbook_close(book);
  }
}

void ExportCsv(benchmark::State& state) {
  const Installation& practice = FilledPractice(state.range(0));
  const std::string file = (practice.ProgramFolder() / "export.csv").string();
  for (auto _ : state) {
    const Installation::Run run = practice.Ctl({"export", "--overwrite", "--output", file});
    if (run.status != 0) state.SkipWithError("varnlogctl export failed");
    state.SetIterationTime(run.seconds);
  }
}

/// All that a row of the export is made of.
void ShellCsv(benchmark::State& state) {
  const Installation& practice = FilledPractice(state.range(0));
  for (auto _ : state) {
    const Installation::Run run =
        Installation::Spawn({"/usr/bin/sqlite3", "-readonly", "-csv", practice.LogFile().string(),
                             "SELECT tXrayCulIntIDPk, tXrayTs, tXraySName, tXraySFirstname, tXrayDBirthday, "
                             "tXraySPreg, tXraySType, "
                             "tXraySRegio, tXraySRadDur, tXraySVolt, tXraySCur, tXraySDose, tXraySDiagRetry, "
                             "tXraySDr, tXraySComment "
                             "FROM TXray ORDER BY tXrayTs DESC"});
    if (run.status != 0) state.SkipWithError("sqlite3 failed");
    state.SetIterationTime(run.seconds);
  }
}

/// Megabytes stand where others have seconds, so that they can be compared in the same way.
void ExportMegabytes(benchmark::State& state) {
  const Installation& practice = FilledPractice(state.range(0));
  const std::string file = (practice.ProgramFolder() / "export.xlsx").string();
  for (auto _ : state) {
    const Installation::Run run = practice.Ctl({"export", "--overwrite", "--output", file});
    if (run.status != 0) state.SkipWithError("varnlogctl export failed");
    state.SetIterationTime(run.peakMegabytes);
  }
}

BENCHMARK(BareXlsx)->Arg(kUsual)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(5);
BENCHMARK(ExportXlsx)->Arg(kUsual)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(5);
BENCHMARK(ShellCsv)
    ->Arg(kUsual)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->Repetitions(7);
BENCHMARK(ExportCsv)
    ->Arg(kUsual)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->Repetitions(7);
BENCHMARK(ExportMegabytes)
    ->Arg(kFew)
    ->Arg(kUsual)
    ->UseManualTime()
    ->Unit(benchmark::kSecond)
    ->Iterations(1)
    ->Repetitions(1);

}  // namespace
}  // namespace varnlog::bench
