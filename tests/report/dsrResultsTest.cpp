#include <gtest/gtest.h>

#include "report/Formula.h"
#include "report/dsrResults.h"
#include "tests/support/FakeTexts.h"
#include "tests/support/Table.h"

namespace varnlog::report {
namespace {

using platform::DateTime;
using platform::ShortDate;

TEST(DateOrderTest, IsReadFromTheSystemsOwnDates) {
  const Table<const char*, const char*, const char*> rows = {
      {"09.02.2024", "02.03.1999", "d.M.yyyy"}, {"2/9/2024", "3/2/1999", "M/d/yyyy"},
      {"2/9/24", "3/2/99", "M/d/yy"},           {"2024-02-09", "1999-03-02", "yyyy-M-d"},
      {"9-2-2024", "2-3-1999", "d-M-yyyy"},     {"9Feb2024", "2Mar1999", ""},
      {"20240209", "19990302", "yyyy/M/d"}};
  for (const auto& [today, second, picture] : rows) {
    EXPECT_EQ(BirthDatePicture(ReadDateOrder(today, second)), picture) << second;
  }
}

TEST(dsrResultsTest, InitialisationWritesTheFiveFormulaTexts) {
  const test::FakeTexts texts;
  const dsrResults report(texts, "Praxis Dr. Süß", *DateTime::FromCivil(2024, 2, 9), ShortDate());
  const std::pair<const char*, const char*> rows[] = {
      {"pregnancy",
       R"(if {dao.tXraySPreg}="J" then "RC_PREGYES" else if {dao.tXraySPreg}="N" then "RC_PREGNO" else "RC_PREGUNKNOWN")"},
      {"diagRetry",
       R"(if {dao.tXraySDiagRetry}="N.d." then "RC_ND" else if {dao.tXraySDiagRetry}="Wdh." then "RC_REPEAT" else {dao.tXraySDiagRetry})"},
      {"printed", R"("DRS_PRINTED 09.02.2024")"},
      {"pages", R"("DRS_PAGE " + ToText(pageNumber, 0) + " DRS_FROM " + ToText(TotalPageCount, 0))"},
      {"Name",
       R"({dao.tXraySName} + ", " + {dao.tXraySFirstname} + " *" + ToText({dao.tXrayDBirthday}, "d.M.yyyy"))"},
  };
  for (const auto& [name, text] : rows) {
    ASSERT_NE(report.FormulaText(name), nullptr) << name;
    EXPECT_EQ(*report.FormulaText(name), text);
    EXPECT_NO_THROW(Formula{text});
  }
  EXPECT_EQ(*report.Caption("txtPraxis"), "Praxis Dr. Süß");
  EXPECT_EQ(*report.Caption("txtRegion"), "DRS_REGION");
  EXPECT_EQ(report.Caption("txtDose"), nullptr);
  EXPECT_EQ(report.FormulaText("other"), nullptr);
}

TEST(dsrResultsTest, AQuoteInATextDoesNotEndTheFormula) {
  const test::FakeTexts texts({}, " \"ja\" {dao.x}");
  const dsrResults report(texts, "", *DateTime::FromCivil(2024, 2, 9), ShortDate());
  for (const char* name : {"pregnancy", "diagRetry", "printed", "pages"}) {
    EXPECT_NO_THROW(Formula{*report.FormulaText(name)}) << name;
  }
}

}  // namespace
}  // namespace varnlog::report
