#include <map>
#include <memory>
#include <stdexcept>

#include <QFile>
#include <QPainter>
#include <QPdfWriter>
#include <benchmark/benchmark.h>

#include "bench/Fakes.h"
#include "bench/Installation.h"
#include "db/dao/DBEngine.h"
#include "report/PaintedReport.h"
#include "report/PdfFile.h"

// The report as a PDF file against a loop that draws the same texts at the same places and knows nothing
// else.

namespace varnlog::bench {
namespace {

namespace fs = std::filesystem;

constexpr const char* kAll = "SELECT TXray.* From TXray ORDER BY TXray.tXrayTs DESC;";

class NoProgress final : public report::ReportProgress {
 public:
  bool Counting(std::int64_t, std::int64_t) override { return true; }
  bool Painting(int, int) override { return true; }
};

/// A practice with a log of `rows` exposures, made once.
class LoggedPractice {
 public:
  static LoggedPractice& Of(std::int64_t rows) {
    static std::map<std::int64_t, std::unique_ptr<LoggedPractice>> practices;
    auto& practice = practices[rows];
    if (!practice) practice = std::make_unique<LoggedPractice>(rows);
    return *practice;
  }

  explicit LoggedPractice(std::int64_t rows) : practice_(FilledPractice(rows)) {
    engine_.SetSystemDB((practice_.ProgramFolder() / "system.mdw").string());
    workspace_ = engine_.CreateWorkspace("Bench", "Admin", "");
    log_ = workspace_->OpenDatabase(practice_.LogFile().string(), false, true);
  }

  [[nodiscard]] const Installation& Practice() const { return practice_; }
  [[nodiscard]] std::string Pdf() const { return (practice_.ProgramFolder() / "report.pdf").string(); }
  [[nodiscard]] std::unique_ptr<dao::Recordset> Rows() { return log_->OpenRecordset(kAll); }
  [[nodiscard]] static report::ReportJob Begin(dao::Recordset& rows) {
    return report::BeginReport(KeyTexts(), "Praxis", "Headline", platform::DateTime::FromSerial(2024, 1, 1),
                               platform::ShortDate(), rows);
  }

 private:
  const Installation& practice_;
  dao::DBEngine engine_;
  std::shared_ptr<dao::Workspace> workspace_;
  std::shared_ptr<dao::Database> log_;
};

QPageLayout Paper() {
  return {QPageSize(QPageSize::A4), QPageLayout::Landscape, QMarginsF(32, 32, 32, 32), QPageLayout::Point};
}

void ReportPdf(benchmark::State& state) {
  LoggedPractice& practice = LoggedPractice::Of(state.range(0));
  NoProgress progress;
  for (auto _ : state) {
    const auto rows = practice.Rows();
    const report::ReportJob job = LoggedPractice::Begin(*rows);
    if (!report::SavePdf(job, Paper(), {.file = practice.Pdf()}, progress))
      state.SkipWithError("cannot save");
  }
}

struct DrawnText {
  QPointF place;
  QString text;
  int font;
};

/// Keeps the texts of a page and draws nothing.
class TextCollector final : public report::ReportCanvas {
 public:
  explicit TextCollector(std::vector<DrawnText>& texts) : texts_(texts) {}
  void DrawText(double left, double baseline, std::string_view text, int font, bool) override {
    texts_.push_back({QPointF(left, baseline) * report::kFontUnitsPerPoint, report::ToDrawnText(text), font});
  }
  void DrawRule(double, double, double, double, double) override {}
  void DrawSymbol(double, double, double, const report::QrCode&) override {}

 private:
  std::vector<DrawnText>& texts_;
};

using DrawnPages = std::vector<std::vector<DrawnText>>;

DrawnPages CollectTexts(const report::ReportJob& job, const std::vector<QFont>& fonts) {
  const report::QtTextMetrics metrics(fonts);
  const QRectF inside = Paper().paintRect(QPageLayout::Point);
  report::ReportLayout layout(job.design, job.report, job.rows, job.shortDate, metrics,
                              {inside.width(), inside.height()});
  NoProgress progress;
  if (!layout.Paginate(progress)) throw std::runtime_error("no pages");
  DrawnPages pages(static_cast<std::size_t>(layout.PageCount()));
  for (int page = 1; page <= layout.PageCount(); ++page) {
    TextCollector collector(pages[static_cast<std::size_t>(page - 1)]);
    layout.PaintPage(page, collector);
  }
  return pages;
}

void DrawBare(const DrawnPages& pages, const std::vector<QFont>& fonts, const std::string& file) {
  QPdfWriter writer(QString::fromStdString(file));
  writer.setResolution(1'440);
  writer.setPageLayout(Paper());
  QPainter painter(&writer);
  int font = -1;
  for (std::size_t i = 0; i < pages.size(); ++i) {
    if (i > 0) writer.newPage();
    for (const DrawnText& drawn : pages[i]) {
      if (drawn.font != font) painter.setFont(fonts[static_cast<std::size_t>(font = drawn.font)]);
      painter.drawText(drawn.place, drawn.text);
    }
  }
}

void BarePdf(benchmark::State& state) {
  LoggedPractice& practice = LoggedPractice::Of(state.range(0));
  const auto rows = practice.Rows();
  const report::ReportJob job = LoggedPractice::Begin(*rows);
  const std::vector<QFont> fonts = report::MakeFonts(job.design);
  const DrawnPages pages = CollectTexts(job, fonts);
  for (auto _ : state) DrawBare(pages, fonts, practice.Pdf());
}

/// Megabytes stand where others have seconds, so that they can be compared in the same way.
void ReportMegabytes(benchmark::State& state) {
  const LoggedPractice& practice = LoggedPractice::Of(state.range(0));
  for (auto _ : state) {
    const Installation::Run run = practice.Practice().Ctl({"report", "--output", practice.Pdf()});
    if (run.status != 0) state.SkipWithError("varnlogctl report failed");
    state.SetIterationTime(run.peakMegabytes);
    state.counters["seconds"] = run.seconds;
  }
}

constexpr std::int64_t kUsual = 10'000;
constexpr std::int64_t kLong = 200'000;

BENCHMARK(BarePdf)->Arg(kUsual)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(7);
BENCHMARK(ReportPdf)->Arg(kUsual)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(7);
BENCHMARK(ReportMegabytes)
    ->Arg(kUsual)
    ->Arg(kLong)
    ->UseManualTime()
    ->Unit(benchmark::kSecond)
    ->Iterations(1)
    ->Repetitions(1);

}  // namespace
}  // namespace varnlog::bench
