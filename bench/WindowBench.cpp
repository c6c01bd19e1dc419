#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

#include <QApplication>
#include <QKeyEvent>
#include <benchmark/benchmark.h>

#include "bench/Installation.h"
#include "bench/Program.h"

// The desktop program itself, drawn off the screen: its real main window over a big log against the same over
// a small one, and against the same grid over rows that are in memory.

namespace varnlog::bench {
namespace {

constexpr std::int64_t kSmall = 10'000;
constexpr std::int64_t kReadAloud = 100'000;
constexpr std::int64_t kLarge = 1'000'000;

void StartToPaintedGrid(benchmark::State& state) {
  const Installation& practice = FilledPractice(state.range(0));
  for (auto _ : state) {
    auto program = std::make_unique<Program>(practice.ProgramFolder());
    program->UntilPainted();
    state.PauseTiming();
    program.reset();
    state.ResumeTiming();
  }
}

/// Answers with rows that were kept from a log, as if they were its rows all over.
class MadeUpRows final : public ui::TDBGridEvents {
 public:
  explicit MadeUpRows(const ui::TDBGrid& grid) : rows_(grid.ApproximateCount()) {
    for (int row = 0; row < kKept; ++row) {
      auto& cells = kept_.emplace_back();
      for (int column = 0; column < grid.ColumnCount(); ++column) {
        cells.emplace_back(grid.CellText(row, column), grid.StateOf(row, column));
      }
    }
  }

  std::optional<ui::DataFailure> UnboundReadDataEx(
      ui::RowBuffer& rowBuf, const std::optional<std::int64_t>& startLocation, std::int64_t offset,
      std::optional<std::int64_t>& approximatePosition) override {
    const std::int64_t first = startLocation.value_or(-1) + offset;
    rowBuf.SetRowCount(static_cast<int>(std::min<std::int64_t>(rowBuf.RowCount(), rows_ - first)));
    for (int row = 0; row < rowBuf.RowCount(); ++row) {
      const std::int64_t position = first + row;
      const auto& cells = kept_[static_cast<std::size_t>(position % kKept)];
      for (int column = 0; column < rowBuf.ColumnCount(); ++column) {
        const auto& [text, cellState] = cells[static_cast<std::size_t>(column)];
        rowBuf.SetValue(row, column, column == 0 ? QString::number(position + 1) : text);
        rowBuf.SetState(row, column, cellState);
      }
      rowBuf.SetBookmark(row, position);
    }
    approximatePosition = first;
    return std::nullopt;
  }
  std::optional<ui::DataFailure> UnboundWriteData(const ui::RowBuffer& /*rowBuf*/,
                                                  std::int64_t /*writeLocation*/) override {
    return std::nullopt;
  }

 private:
  static constexpr int kKept = 512;
  std::int64_t rows_;
  std::vector<std::vector<std::pair<QString, ui::CellState>>> kept_;
};

/// The program with a log all of whose rows are counted.
struct View {
  explicit View(std::int64_t rows) : program(FilledPractice(rows).ProgramFolder()) {
    program.UntilPopulated();
    if (program.Grid().ApproximateCount() != rows) throw std::runtime_error("rows are missing");
  }
  void MakeUpRows() {
    madeUp = std::make_unique<MadeUpRows>(program.Grid());
    program.Grid().SetEvents(madeUp.get());
  }

  std::unique_ptr<MadeUpRows> madeUp;  // outlives the grid that asks it
  Program program;
};

using Views = std::map<std::pair<std::int64_t, bool>, std::unique_ptr<View>>;

Views& KeptViews() {
  static Views views;
  return views;
}

ui::TDBGrid& GridOver(std::int64_t rows, bool madeUp) {
  auto& view = KeptViews()[{rows, madeUp}];
  if (!view) {
    view = std::make_unique<View>(rows);
    if (madeUp) view->MakeUpRows();
  }
  return view->program.Grid();
}

void Jump(benchmark::State& state, bool madeUp) {
  ui::TDBGrid& grid = GridOver(state.range(0), madeUp);
  std::mt19937 random(1);
  std::uniform_int_distribution<int> row(0, static_cast<int>(state.range(0)) - 1);
  for (auto _ : state) JumpTo(grid, row(random));
}
void JumpPainted(benchmark::State& state) {
  Jump(state, false);
}
void JumpMadeUp(benchmark::State& state) {
  Jump(state, true);
}

void PageDown(benchmark::State& state, bool madeUp) {
  ui::TDBGrid& grid = GridOver(state.range(0), madeUp);
  constexpr int kRowsFromEnd = 200;
  JumpTo(grid, 0);
  for (auto _ : state) {
    QKeyEvent key(QEvent::KeyPress, Qt::Key_PageDown, Qt::NoModifier);
    QApplication::sendEvent(&grid, &key);
    grid.viewport()->repaint();
    if (grid.Row() > grid.ApproximateCount() - kRowsFromEnd) JumpTo(grid, 0);
  }
}
void PageDownPainted(benchmark::State& state) {
  PageDown(state, false);
}
void PageDownMadeUp(benchmark::State& state) {
  PageDown(state, true);
}

void ReadAloud(benchmark::State& state) {
  ui::TDBGrid& grid = GridOver(state.range(0), false);
  for (auto _ : state) {
    if (ReadChildren(grid) == 0) state.SkipWithError("nothing to read");
    state.PauseTiming();
    grid.ReBind(grid.ApproximateCount());  // so that every object is made anew
    state.ResumeTiming();
  }
}

double WalkMegabytes(const std::string& how, std::int64_t rows) {
  const Installation::Run run = Installation::Spawn(
      {"/proc/self/exe", kWalkOption, how, FilledPractice(rows).ProgramFolder().string()});
  if (run.status != 0) throw std::runtime_error("the walk through the log failed");
  return run.peakMegabytes;
}

/// Megabytes stand where others have seconds, so that they have a limit in the same way.
void ViewMegabytes(benchmark::State& state) {
  for (auto _ : state) state.SetIterationTime(WalkMegabytes("rows", kLarge) - WalkMegabytes("rows", 0));
}
void ReadAloudMegabytes(benchmark::State& state) {
  for (auto _ : state) {
    const double added = WalkMegabytes("children", kReadAloud) - WalkMegabytes("rows", kReadAloud);
    state.SetIterationTime(std::max(added, 0.1));  // two runs of the same differ by as much
  }
}

/// Many short turns: one of them finds the processor's cache left alone.
constexpr int kTurns = 15;

BENCHMARK(StartToPaintedGrid)->Arg(kSmall)->Arg(kLarge)->Unit(benchmark::kMillisecond);
BENCHMARK(JumpPainted)
    ->Arg(kSmall)
    ->Arg(kLarge)
    ->Unit(benchmark::kMicrosecond)
    ->MinTime(0.1)
    ->Repetitions(kTurns);
BENCHMARK(JumpMadeUp)->Arg(kLarge)->Unit(benchmark::kMicrosecond)->MinTime(0.1)->Repetitions(kTurns);
BENCHMARK(PageDownPainted)
    ->Arg(kSmall)
    ->Arg(kLarge)
    ->Unit(benchmark::kMicrosecond)
    ->MinTime(0.1)
    ->Repetitions(kTurns);
BENCHMARK(PageDownMadeUp)->Arg(kLarge)->Unit(benchmark::kMicrosecond)->MinTime(0.1)->Repetitions(kTurns);
BENCHMARK(ReadAloud)->Arg(kReadAloud)->Unit(benchmark::kMillisecond);
BENCHMARK(ViewMegabytes)->UseManualTime()->Unit(benchmark::kSecond)->Iterations(1)->Repetitions(3);
BENCHMARK(ReadAloudMegabytes)->UseManualTime()->Unit(benchmark::kSecond)->Iterations(1)->Repetitions(3);

}  // namespace

void CloseViews() {
  KeptViews().clear();
}

}  // namespace varnlog::bench
