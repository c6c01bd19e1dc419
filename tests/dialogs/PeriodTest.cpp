#include <gtest/gtest.h>

#include "dialogs/Period.h"

namespace varnlog::dialogs {
namespace {

using core::SelectionKind;
using platform::DateTime;

class PeriodTest : public testing::Test {
 protected:
  std::optional<PeriodProblem> Confirms(SelectionKind kind, PeriodBoxes& boxes) {
    selection.SortSelectionGl = kind;
    selection.dPatBirthdayGl = *DateTime::FromCivil(1961, 3, 12);
    return Period(selection, shortDate, clock).Confirm(boxes);
  }
  std::string Chosen() const { return selection.dBegGl.ToIso() + " to " + selection.dEndGl.ToIso(); }

  core::Selection selection;
  platform::ShortDate shortDate;
  platform::FixedClock clock{*DateTime::FromCivil(2024, 5, 17, 13, 45, 0)};
};

TEST_F(PeriodTest, FillsTheMissingDateAsTheSelectionNeedsIt) {
  struct Row {
    SelectionKind kind;
    PeriodBoxes entered;
    PeriodBoxes shown;
    const char* chosen;
  };
  const Row rows[] = {
      {SelectionKind::kPeriod,
       {"1.2.2001", ""},
       {"1.2.2001", "17.05.2024"},
       "2001-02-01 00:00:00 to 2024-05-17 00:00:00"},
      {SelectionKind::kPeriodXV,
       {"", "31.12.2001"},
       {"01.01.1880", "31.12.2001"},
       "1880-01-01 00:00:00 to 2001-12-31 00:00:00"},
      {SelectionKind::kPatientPeriod,
       {"", "31.12.2001"},
       {"12.03.1961", "31.12.2001"},
       "1961-03-12 00:00:00 to 2001-12-31 00:00:00"},
      {SelectionKind::kPatientPeriod,
       {"2001-02-01", ""},
       {"2001-02-01", "17.05.2024"},
       "2001-02-01 00:00:00 to 2024-05-17 00:00:00"},
      {SelectionKind::kPeriodXI,
       {"31.12.2001", "1.1.99"},
       {"31.12.2001", "1.1.99"},
       "2001-12-31 00:00:00 to 1999-01-01 00:00:00"},
  };
  for (const Row& row : rows) {
    PeriodBoxes boxes = row.entered;
    EXPECT_FALSE(Confirms(row.kind, boxes)) << row.chosen;
    EXPECT_EQ(boxes, row.shown);
    EXPECT_EQ(Chosen(), row.chosen);
  }
}

TEST_F(PeriodTest, StaysOpenAtTheBoxThatIsWrongAndKeepsTheOldPeriod) {
  struct Row {
    SelectionKind kind;
    PeriodBoxes entered;
    const char* message;
    const char* dData;
    int focus;
  };
  const Row rows[] = {
      {SelectionKind::kPeriod, {"", ""}, "BE_ATLEAST1DATE", "", 0},
      {SelectionKind::kPeriod, {"30.2.2001", ""}, "BE_DATENOTVALID", "30.2.2001", 0},
      {SelectionKind::kPeriod, {"", "1.13.2001"}, "BE_DATENOTVALID", "1.13.2001", 1},
      {SelectionKind::kPeriod, {"1.1.2001", "gestern"}, "BE_DATENOTVALID", "gestern", 1},
      {SelectionKind::kPatient, {"1.1.2001", ""}, "BE_DATENOTVALID", "", 1},
      {SelectionKind::kAll, {"", "1.1.2001"}, "BE_DATENOTVALID", "", 0},
  };
  for (const Row& row : rows) {
    PeriodBoxes boxes = row.entered;
    const auto problem = Confirms(row.kind, boxes);
    ASSERT_TRUE(problem) << row.entered[0] << " / " << row.entered[1];
    EXPECT_EQ(problem->message.name(), row.message);
    EXPECT_EQ(problem->dData, row.dData);
    EXPECT_EQ(problem->focus, row.focus);
    EXPECT_FALSE(selection.dBegGl.IsSet() || selection.dEndGl.IsSet());
  }
}

TEST_F(PeriodTest, SaysWhatItIsAskedForAndWhenItIsReversed) {
  selection.strPatNameGl = "Müller";
  selection.strPatFirstnameGl = "Hans";
  const Period period(selection, shortDate, clock);
  selection.SortSelectionGl = SelectionKind::kPeriodXC;
  EXPECT_EQ(period.Command().name(), "MN_MNU_SELDATEALLXC");
  EXPECT_EQ(period.Patient(), "");
  selection.SortSelectionGl = SelectionKind::kPatientPeriod;
  EXPECT_EQ(period.Patient(), "Müller, Hans");
  EXPECT_TRUE(period.IsReversed({"2.1.2024", "1.1.2024"}));
  for (const PeriodBoxes& boxes :
       {PeriodBoxes{"1.1.2024", "1.1.2024"}, {"", "1.1.2024"}, {"2.1.2024", "x"}}) {
    EXPECT_FALSE(period.IsReversed(boxes)) << boxes[0];
  }
}

TEST_F(PeriodTest, CurrentYearRunsFromNewYearToToday) {
  EXPECT_EQ(Period(selection, shortDate, clock).CurrentYear(), (PeriodBoxes{"01.01.2024", "17.05.2024"}));
}

}  // namespace
}  // namespace varnlog::dialogs
