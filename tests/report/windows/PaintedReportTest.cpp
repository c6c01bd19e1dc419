#include <QImage>
#include <QPdfWriter>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report/PaintedReport.h"
#include "report/PdfFile.h"
#include "tests/report/ReportFixture.h"
#include "tests/report/windows/PdfPages.h"

namespace varnlog::report {
namespace {

using platform::DateTime;

class PaintedReportTest : public testing::Test {
 protected:
  ReportJob Begin() {
    rows_ = log.Rows();
    return BeginReport(texts, "Praxis", "Titel", *DateTime::FromCivil(2024, 2, 9), platform::ShortDate(),
                       *rows_);
  }
  [[nodiscard]] std::string File() const { return (log.Folder() / "bericht.pdf").string(); }

  static QPageLayout A4() {
    return {QPageSize(QPageSize::A4), QPageLayout::Landscape, QMarginsF(30, 30, 30, 30), QPageLayout::Point};
  }

  LogFile log;
  GivenTexts texts;
  CountedProgress progress;
  std::unique_ptr<dao::Recordset> rows_;
};

TEST_F(PaintedReportTest, WidthsAddUpForTextsThatAreNotJoined) {
  const std::vector<QFont> fonts = MakeFonts(StoredDesign());
  const QtTextMetrics metrics(fonts);
  for (const char* text : {"AVAWA Tefl Offizier", "Müller-Lüdenscheidt, Zoë *05.07.1961", "Ёлка Щукин",
                           "Ωµέγα", "e\u0301 o\u0308", "\u05D0\u05D1\u05D2 12", "漢字", "a\U0001F642b"}) {
    const double exact = QFontMetricsF(fonts[0]).horizontalAdvance(ToDrawnText(text)) / kFontUnitsPerPoint;
    EXPECT_NEAR(metrics.Width(text, 0), exact, 0.01) << text;
  }
  EXPECT_EQ(ToDrawnText("e\u0301"), QStringLiteral("é"));
  EXPECT_TRUE(metrics.IsRightToLeft("\u05D0\u05D1 12"));
  EXPECT_FALSE(metrics.IsRightToLeft("a \u05D0\u05D1"));
  EXPECT_FALSE(metrics.IsRightToLeft("漢字"));
}

TEST_F(PaintedReportTest, StoppingLeavesTheOldFile) {
  log.Add({}, 200);
  test::WriteFile(platform::ToPath(File()), "old");
  for (const int stopAt : {1, 2, 3}) {
    const ReportJob job = Begin();
    CountedProgress stopping;
    (stopAt == 1 ? stopping.stopAtCounting : stopping.stopAtPainting) = stopAt;
    EXPECT_FALSE(SavePdf(job, A4(), {.file = File()}, stopping));
  }
  EXPECT_EQ(test::ReadFile(platform::ToPath(File())), "old");
  EXPECT_THAT(log.Names(), testing::ElementsAre("bericht.pdf", "log.mdb", "system.mdw"));
}

TEST_F(PaintedReportTest, TheSamePageHasTheSameLinesOnEveryDevice) {
  log.Add({.comment = "eine Bemerkung, die länger ist als ihre Spalte breit und deshalb umbrochen wird"}, 30);
  const ReportJob job = Begin();
  PaintedReport report(job, A4());
  ASSERT_TRUE(report.Paginate(progress));
  std::vector<std::string> shown;
  for (const int resolution : {72, 300, 1200}) {
    {
      QPdfWriter writer(QString::fromStdString(File()));
      writer.setResolution(resolution);
      writer.setPageLayout(A4());
      ASSERT_TRUE(report.Paint(writer, {1, 1}, progress));
    }
    shown.push_back(PdfText(File()));
  }
  EXPECT_EQ(shown[0], shown[1]);
  EXPECT_EQ(shown[1], shown[2]);
  EXPECT_THAT(shown[0], testing::HasSubstr("eine Bemerkung"));
}

TEST_F(PaintedReportTest, NothingIsDrawnOutsideTheMargins) {
  log.Add({.name = std::string(32, 'W'), .comment = std::string(255, 'W')}, 3);
  const ReportJob job = Begin();
  for (const QPageSize::PageSizeId size : {QPageSize::A4, QPageSize::Letter, QPageSize::A5, QPageSize::A3}) {
    const QPageLayout page(QPageSize(size), QPageLayout::Landscape, QMarginsF(), QPageLayout::Point);
    PaintedReport report(job, page);
    ASSERT_TRUE(report.Paginate(progress));
    constexpr int kBorder = 20;
    const QSize paper = page.fullRectPoints().size();
    QImage image(paper + QSize(2 * kBorder, 2 * kBorder), QImage::Format_Grayscale8);
    image.setDotsPerMeterX(2835);  // one dot a point
    image.setDotsPerMeterY(2835);
    image.fill(Qt::white);
    {
      QPainter painter(&image);
      painter.translate(kBorder, kBorder);
      report.PaintPage(painter, 1);
    }
    const QRect inside(kBorder - 1, kBorder - 1, paper.width() + 2, paper.height() + 2);
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        ASSERT_TRUE(inside.contains(x, y) || image.pixelColor(x, y) == Qt::white)
            << x << ", " << y << " on " << QPageSize::name(size).toStdString();
      }
    }
  }
}

}  // namespace
}  // namespace varnlog::report
