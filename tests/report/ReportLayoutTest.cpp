#include <algorithm>
#include <chrono>
#include <set>
#include <sstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/report/ReportFixture.h"

namespace varnlog::report {
namespace {

using platform::DateTime;
using platform::ShortDate;

constexpr PageArea kA4{778, 531};

class ReportLayoutTest : public testing::Test {
 protected:
  /// A report of the rows that the log holds now.
  void Begin(PageArea area = kA4) {
    rows_ = log.Rows();
    job_.emplace(BeginReport(texts, "Praxis Dr. Süß", "Alle Patienten", *DateTime::FromCivil(2024, 2, 9),
                             ShortDate(), *rows_));
    metrics_.emplace(job_->design);
    area_ = area;
    layout_.emplace(job_->design, job_->report, *rows_, job_->shortDate, *metrics_, area);
  }

  std::vector<Drawing> Draw() {
    CountedProgress progress;
    EXPECT_TRUE(layout_->Paginate(progress));
    return DrawPages();
  }

  /// Other rows, or another state of the log, in the same design.
  std::vector<Drawing> DrawAnew(const LaterEntriesOf& entriesOf = {}) {
    layout_.emplace(job_->design, job_->report, *rows_, job_->shortDate, *metrics_, area_, entriesOf);
    return Draw();
  }

  std::vector<Drawing> DrawPages() {
    std::vector<Drawing> pages(static_cast<std::size_t>(layout_->PageCount()));
    for (int page = 1; page <= layout_->PageCount(); ++page)
      layout_->PaintPage(page, pages[static_cast<std::size_t>(page - 1)]);
    for (const Drawing& page : pages) ExpectNothingOverlaps(page);
    return pages;
  }

  [[nodiscard]] double SizeOf(const Drawing::Text& text) const {
    return job_->design.fonts[static_cast<std::size_t>(text.font)].size;
  }
  [[nodiscard]] double RightOf(const Drawing::Text& text) const {
    return text.left + metrics_->Width(text.text, text.font);
  }

  [[nodiscard]] bool Overlap(const Drawing::Text& a, const Drawing::Text& b) const {
    constexpr double kClose = 0.01;
    const bool beside = RightOf(a) <= b.left + kClose || RightOf(b) <= a.left + kClose;
    const double apart = std::abs(a.baseline - b.baseline);
    return !beside && apart < std::max(SizeOf(a), SizeOf(b));
  }

  /// Texts neither cover each other nor cross a column's rule nor leave the paper.
  void ExpectNothingOverlaps(const Drawing& page) const {
    const double width = area_.width / layout_->Scale();
    const double height = area_.height / layout_->Scale();
    for (std::size_t i = 0; i < page.texts.size(); ++i) {
      const Drawing::Text& text = page.texts[i];
      EXPECT_GE(text.left, 0) << text.text;
      EXPECT_LE(RightOf(text), width + 0.01) << text.text;
      EXPECT_LE(text.baseline, height) << text.text;
      for (std::size_t j = i + 1; j < page.texts.size(); ++j)
        ASSERT_FALSE(Overlap(text, page.texts[j])) << text.text << " covers " << page.texts[j].text;
      for (const Drawing::Rule& rule : page.rules) {
        const bool crosses = rule.x1 == rule.x2 && text.left < rule.x1 && RightOf(text) > rule.x1 &&
                             text.baseline > rule.y1 && text.baseline < rule.y2;
        ASSERT_FALSE(crosses) << text.text;
      }
    }
  }

  /// The running numbers on a page, from the top down.
  [[nodiscard]] std::vector<int> Numbers(const Drawing& page) const {
    std::vector<int> numbers;
    const double firstColumn = job_->design.columns.front().width;
    for (const Drawing::Text& text : page.texts) {
      const bool isNumber = text.text.find_first_not_of("0123456789") == std::string::npos;
      if (isNumber && RightOf(text) < firstColumn) numbers.push_back(std::stoi(text.text));
    }
    return numbers;
  }

  LogFile log;
  GivenTexts texts;
  std::unique_ptr<dao::Recordset> rows_;
  std::optional<ReportJob> job_;
  std::optional<SquareMetrics> metrics_;
  std::optional<ReportLayout> layout_;
  PageArea area_;
};

TEST_F(ReportLayoutTest, EveryRowStandsOnceUnderHeadingsThatRepeat) {
  log.Add({}, 150);
  Begin();
  const std::vector<Drawing> pages = Draw();
  ASSERT_GE(pages.size(), 3U);
  int expected = 1;
  for (std::size_t i = 0; i < pages.size(); ++i) {
    for (const int number : Numbers(pages[i])) EXPECT_EQ(number, expected++);
    for (const char* text : {"Alle Patienten", "Praxis Dr. Süß", "RS_NR", "RS_COMMENT", "mGy * cm 2",
                             "DRS_PRINTED 09.02.2024", "DRS_PRODUCT"}) {
      EXPECT_TRUE(pages[i].Has(text)) << text << " on page " << i + 1;
    }
    const std::string footer =
        "DRS_PAGE " + std::to_string(i + 1) + " DRS_FROM " + std::to_string(pages.size());
    EXPECT_TRUE(pages[i].Has(footer)) << footer;
    EXPECT_EQ(pages[i].Has("DRS_COUNT 150"), i + 1 == pages.size());
  }
  EXPECT_EQ(expected, 151);
}

TEST_F(ReportLayoutTest, LongTextsWrapInTheirColumnsAndLoseNoWord) {
  std::string comment;
  for (int i = 0; i < 40; ++i) comment += "w" + std::to_string(i) + (i % 7 == 0 ? "\r" : " ");
  std::string wide;
  for (int i = 0; i < 255; ++i) wide += "界";
  log.Add({.name = "Schmidt-Schauffhausen zu Ober", .person = "WWWWWWWWWWWW", .comment = comment});
  log.Add({.region = "Panorama Kinder", .retry = "XXXXXXXXXXXXXXXX", .comment = wide});
  log.Add({.name = "\u05D0\u05D1\u05D2", .comment = std::string(200, '\n') + "zuletzt"}, 60);
  Begin();
  const std::vector<Drawing> pages = Draw();
  std::string shown;
  for (const Drawing::Text& text : pages.at(0).texts) shown += text.text + " ";
  std::istringstream words(comment);
  for (std::string word; words >> word;) EXPECT_NE(shown.find(" " + word + " "), std::string::npos) << word;
  EXPECT_TRUE(pages.at(0).Has("zuletzt"));
  const auto& first = pages.at(0).texts;
  const auto hebrew = std::ranges::find(first, "\u05D0\u05D1\u05D2, Max *5.7.1961", &Drawing::Text::text);
  ASSERT_NE(hebrew, first.end());
  EXPECT_TRUE(hebrew->rightToLeft);
}

TEST_F(ReportLayoutTest, AFullPagePutsTheCountOnAPageOfItsOwn) {
  log.Add({}, 200);
  Begin();
  const std::size_t full = Numbers(Draw().at(1)).size();
  LogFile fullLog;
  fullLog.Add({}, static_cast<int>(full));
  rows_ = fullLog.Rows();
  const std::vector<Drawing> pages = DrawAnew();
  ASSERT_EQ(pages.size(), 2U);
  EXPECT_EQ(Numbers(pages[0]).size(), full);
  EXPECT_TRUE(Numbers(pages[1]).empty());
  EXPECT_TRUE(pages[1].Has("DRS_COUNT " + std::to_string(full)));
  EXPECT_TRUE(pages[1].Has("RS_PATIENT"));
}

TEST_F(ReportLayoutTest, TheStateOfTheLogMovesNothingToAnotherPage) {
  // From a page that has room for it to one that the rows fill.
  log.Add({}, 200);
  Begin();
  const int full = static_cast<int>(Numbers(Draw().front()).size());
  for (int rows = full - 6; rows <= full + 1; ++rows) {
    LogFile some;
    some.Add({}, rows);
    Begin();
    rows_ = some.Rows();
    const std::vector<Drawing> without = DrawAnew();
    job_->report.SetLogState(texts, {"7-ABCDE-X", 50});
    const std::vector<Drawing> with = DrawAnew();
    ASSERT_GE(with.size(), without.size());
    EXPECT_TRUE(with.back().Has("7-ABCDE-X")) << rows;
    for (std::size_t page = 0; page < without.size(); ++page)
      for (const Drawing::Text& text : without[page].texts)
        EXPECT_TRUE(with[page].HasAt(text) || text.text.starts_with("DRS_PAGE"))
            << text.text << " of " << rows;
  }
}

TEST_F(ReportLayoutTest, LaterEntriesStandBelowTheirRowFromPageToPage) {
  log.Add({}, 60);
  const auto entriesOf = [](std::int64_t exposure, std::string_view type) {
    std::vector<std::string> entries;
    // One exposure has more than two pages of them.
    const int count = exposure == 5 ? 120 : exposure % 10 == 0 ? 2 : 0;
    for (int i = 1; i <= count; ++i)
      entries.push_back(std::string(type) + std::to_string(exposure) + "." + std::to_string(i));
    return entries;
  };
  Begin();
  std::vector<std::string> drawn;
  std::size_t numbers = 0;
  for (const Drawing& page : DrawAnew(entriesOf)) {
    numbers += Numbers(page).size();
    for (const Drawing::Text& text : page.texts)
      if (text.text.starts_with("XI") && text.text != "XI") drawn.push_back(text.text);
  }
  std::vector<std::string> expected;
  for (int exposure = 1; exposure <= 60; ++exposure)
    std::ranges::copy(entriesOf(exposure, "XI"), std::back_inserter(expected));
  EXPECT_EQ(drawn, expected);
  EXPECT_EQ(numbers, 60U + expected.size()) << "each entry repeats the number of its row";
}

TEST_F(ReportLayoutTest, RowsChangedWhilePrintingStayOnTheirPage) {
  log.Add({}, 100);
  Begin();
  CountedProgress progress;
  ASSERT_TRUE(layout_->Paginate(progress));
  const int pages = layout_->PageCount();
  const std::string longer(255, 'x');
  test::Damages(log.Database(), "UPDATE TXray SET tXraySComment = '" + longer + "'");
  test::Damages(log.Database(), "DELETE FROM TXray WHERE tXrayCulIntIDPk = 3");
  // Announcements of a server are listened to every few milliseconds.
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  const std::vector<Drawing> drawn = DrawPages();
  EXPECT_EQ(layout_->PageCount(), pages);
  std::set<int> numbers;
  for (const Drawing& page : drawn) std::ranges::copy(Numbers(page), std::inserter(numbers, numbers.end()));
  EXPECT_EQ(numbers.size(), 99U);
  EXPECT_FALSE(numbers.contains(3));
}

TEST_F(ReportLayoutTest, StopsWhenTold) {
  log.Add({}, 2'000);
  for (const int calls : {1, 2, 4}) {
    Begin();
    CountedProgress progress;
    progress.stopAtCounting = calls;
    EXPECT_FALSE(layout_->Paginate(progress));
    EXPECT_EQ(progress.countings, calls);
  }
}

TEST_F(ReportLayoutTest, OtherPaperChangesTheColumnsThatStretch) {
  Begin();
  const ReportDesign& design = job_->design;
  for (const double width : {728.0, 778.0, 1127.0}) {  // Letter, A4, A3
    const std::vector<double> edges = ColumnEdges(design, width);
    EXPECT_DOUBLE_EQ(edges.back(), width);
    for (std::size_t i = 0; i + 1 < edges.size(); ++i) {
      const ColumnDesign& column = design.columns[i];
      const double now = edges[i + 1] - edges[i];
      const double least = column.stretch == 0 ? column.width : column.width * 2 / 3;
      EXPECT_GE(now, least - 0.5) << column.name << " on " << width;
      EXPECT_TRUE(column.stretch > 0 || now < column.width + 0.5) << column.name << " on " << width;
    }
  }
}

TEST_F(ReportLayoutTest, SmallPaperMakesThePageSmaller) {
  log.Add({}, 100);
  for (const PageArea area : {PageArea{356, 234}, PageArea{531, 778}, PageArea{100, 20}}) {
    Begin(area);
    EXPECT_LT(layout_->Scale(), 1);
    std::size_t rows = 0;
    for (const Drawing& page : Draw()) rows += Numbers(page).size();
    EXPECT_EQ(rows, 100U) << area.width;
  }
  Begin();
  EXPECT_EQ(layout_->Scale(), 1);
}

TEST_F(ReportLayoutTest, AFormulaThatCannotBeReadIsNamed) {
  log.Add({});
  const std::pair<const char*, const char*> rows[] = {
      {"\"offen", "not closed"}, {"{dao.tXrayNothing}", "tXrayNothing"}, {"1 + \"a\"", "joins texts"}};
  for (const auto& [formula, reason] : rows) {
    Begin();
    for (BandDesign& band : job_->design.sections.back()) {
      for (ObjectDesign& object : band.objects) object.value = formula;
    }
    try {
      (void)DrawAnew();
      ADD_FAILURE() << formula << " was accepted";
    } catch (const NamedFormulaError& error) {
      EXPECT_EQ(error.name(), formula);
      EXPECT_THAT(error.what(), testing::HasSubstr(reason));
    }
  }
}

}  // namespace
}  // namespace varnlog::report
