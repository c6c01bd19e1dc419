#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report/ReportDesign.h"

namespace varnlog::report {
namespace {

using testing::HasSubstr;

TEST(ReportDesignTest, TheStoredDesignHasItsColumnsInTheirOrder) {
  const ReportDesign design = ReadReportDesign(StoredDesignText());
  const BandDesign& headings = design.Section(SectionKind::kPageHeader).at(1);
  const BandDesign& line = design.Section(SectionKind::kDetails).at(0);
  const std::pair<const char*, const char*> rows[] = {
      {"txtNr", ""},
      {"txtDate", "tXrayTs"},
      {"txtPatient", "Name"},
      {"txtPregnancy", "pregnancy"},
      {"txtPersCharge", "tXraySDr"},
      {"txtType", "tXraySType"},
      {"txtRegion", "tXraySRegio"},
      {"txtMs", "tXraySRadDur"},
      {"txtKv", "tXraySVolt"},
      {"txtMa", "tXraySCur"},
      {"txtNotDiag", "diagRetry"},
      {"txtComment", "tXraySComment"},
      {"txtDose", "tXraySDose"},
  };
  ASSERT_EQ(headings.objects.size(), std::size(rows));
  ASSERT_EQ(line.objects.size(), std::size(rows));
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(headings.objects[i].name, rows[i].first);
    EXPECT_EQ(line.objects[i].value, rows[i].second);
    EXPECT_EQ(headings.objects[i].column, static_cast<int>(i));
    EXPECT_EQ(line.objects[i].column, static_cast<int>(i));
  }
  EXPECT_EQ(headings.objects[6].caption, "Zahn/\rProgr.");
  EXPECT_EQ(design.formulas.size(), 5U);
}

TEST(ReportDesignTest, ReadsSettingsInAnyOrderAndTextsInQuotes) {
  const ReportDesign design = ReadReportDesign(
      "# a comment\r\n"
      "page Letter padding=1.5 margin=20\r\n"
      "font f size=9 bold=yes family=\"Two Words, Other\"\n"
      "column c stretch=2 width=100 align=centre\n"
      "formula g = \"a # b\" + {dao.x}   \n"
      "section dsrDetails\n"
      "  band b when=empty\n"
      "    text t column=c caption=\"one|two = three\" lines=3\n"
      "    formula-field u value=g from=25 to=50");
  EXPECT_EQ(design.paper, "Letter");
  EXPECT_EQ(design.padding, 1.5);
  EXPECT_EQ(design.fonts.at(0).family, "Two Words, Other");
  EXPECT_EQ(design.formulas.at(0).text, "\"a # b\" + {dao.x}");
  const BandDesign& band = design.Section(SectionKind::kDetails).at(0);
  EXPECT_EQ(band.when, BandWhen::kEmpty);
  EXPECT_EQ(band.objects.at(0).caption, "one\rtwo = three");
  EXPECT_EQ(band.objects.at(0).align, Align::kCentre);
  EXPECT_EQ(band.objects.at(0).lines, 3);
  EXPECT_EQ(band.objects.at(1).from, 25);
}

TEST(ReportDesignTest, NamesTheLineThatItCannotRead) {
  const std::string start = "font f size=9\ncolumn c width=9\nsection dsrDetails\nband b\n";
  const std::pair<std::string, const char*> rows[] = {
      {"", "a font, a column and a detail section"},
      {"font", "line 1: a name was expected"},
      {"font f size=big", "line 1: 'big' is no length for size"},
      {"font f size=9pt", "line 1: '9pt' is no length"},
      {"font f size=-1", "line 1: '-1' is no length"},
      {"font f size=nan", "line 1: 'nan' is no length"},
      {"font f colour=red", "line 1: 'colour' is no setting of font"},
      {"font f family=\"open", "line 1: the value of 'family' is not closed"},
      {"picture p", "line 1: 'picture' is not known"},
      {"band b", "line 1: a band stands in a section"},
      {"section details", "line 1: there is no such section"},
      {"text t", "line 1: an object stands in a band"},
      {start + "text t column=d", "line 5: 'd' has not been described"},
      {start + "text t font=g", "line 5: 'g' has not been described"},
      {start + "text t align=middle", "line 5: 'middle' is no value of align"},
      {start + "formula-field t value=g", "line 5: 'g' has not been described"},
      {start + "text t caption", "line 5: 'caption' has no value"},
  };
  for (const auto& [text, message] : rows) {
    try {
      (void)ReadReportDesign(text);
      ADD_FAILURE() << text << " was accepted";
    } catch (const DesignError& error) {
      EXPECT_THAT(error.what(), HasSubstr(message)) << text;
    }
  }
}

}  // namespace
}  // namespace varnlog::report
