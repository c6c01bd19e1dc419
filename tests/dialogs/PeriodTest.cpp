#include <gtest/gtest.h>

#include "dialogs/DateEntry.h"
#include "dialogs/Period.h"
#include "tests/support/FakeTexts.h"
#include "tests/support/Table.h"

namespace varnlog::dialogs {
namespace {

using core::SelectionKind;
using platform::DateTime;

class PeriodTest : public testing::Test {
 protected:
  std::optional<PeriodProblem> Confirms(SelectionKind kind, PeriodBoxes& boxes) {
    selection.SortSelectionGl = kind;
    selection.dPatBirthdayGl = *DateTime::FromCivil(1961, 3, 12);
    return Period(selection, shortDate, clock, texts).Confirm(boxes);
  }
  [[nodiscard]] std::string Chosen() const {
    return selection.dBegGl.ToIso() + " to " + selection.dEndGl.ToIso();
  }

  core::Selection selection;
  test::FakeTexts texts{{{"BE_WORDTODAY", "сегодня"}, {"BE_WORDYESTERDAY", "aujourd’hui"}}};
  platform::ShortDate shortDate;
  platform::FixedClock clock{*DateTime::FromCivil(2024, 5, 17, 13, 45, 0)};
};

TEST_F(PeriodTest, FillsTheMissingDateAsTheSelectionNeedsIt) {
  const Table<SelectionKind, PeriodBoxes, PeriodBoxes, const char*> rows = {
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
       "2001-12-31 00:00:00 to 1999-01-01 00:00:00"}};
  for (const auto& [kind, entered, shown, chosen] : rows) {
    PeriodBoxes boxes = entered;
    EXPECT_FALSE(Confirms(kind, boxes)) << chosen;
    EXPECT_EQ(boxes, shown);
    EXPECT_EQ(Chosen(), chosen);
  }
}

TEST_F(PeriodTest, StaysOpenAtTheBoxThatIsWrongAndKeepsTheOldPeriod) {
  const Table<SelectionKind, PeriodBoxes, const char*, const char*, int> rows = {
      {SelectionKind::kPeriod, {"", ""}, "BE_ATLEAST1DATE", "", 0},
      {SelectionKind::kPeriod, {"30.2.2001", ""}, "BE_DATENOTVALID", "30.2.2001", 0},
      {SelectionKind::kPeriod, {"", "1.13.2001"}, "BE_DATENOTVALID", "1.13.2001", 1},
      {SelectionKind::kPeriod, {"1.1.2001", "gestern"}, "BE_DATENOTVALID", "gestern", 1},
      {SelectionKind::kPatient, {"1.1.2001", ""}, "BE_DATENOTVALID", "", 1},
      {SelectionKind::kAll, {"", "1.1.2001"}, "BE_DATENOTVALID", "", 0}};
  for (const auto& [kind, entered, message, dData, focus] : rows) {
    PeriodBoxes boxes = entered;
    const auto problem = Confirms(kind, boxes);
    ASSERT_TRUE(problem) << entered[0] << " / " << entered[1];
    EXPECT_EQ(problem->message.name(), message);
    EXPECT_EQ(problem->dData, dData);
    EXPECT_EQ(problem->focus, focus);
    EXPECT_FALSE(selection.dBegGl.IsSet() || selection.dEndGl.IsSet());
  }
}

TEST_F(PeriodTest, SaysWhatItIsAskedForAndWhenItIsReversed) {
  selection.strPatNameGl = "Müller";
  selection.strPatFirstnameGl = "Hans";
  const Period period(selection, shortDate, clock, texts);
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

TEST_F(PeriodTest, UsualPeriodsEndTodayUnlessTheyArePast) {
  using enum Period::Usual;
  const auto boxesOn = [this](int month, int day, Period::Usual usual) {
    const platform::FixedClock then{*DateTime::FromCivil(2024, month, day, 13, 45, 0)};
    const PeriodBoxes boxes = Period(selection, shortDate, then, texts).Boxes(usual);
    return boxes[0] + " " + boxes[1];
  };
  EXPECT_EQ(boxesOn(5, 17, kToday), "17.05.2024 17.05.2024");
  EXPECT_EQ(boxesOn(5, 17, kThisWeek), "13.05.2024 17.05.2024");
  EXPECT_EQ(boxesOn(5, 13, kThisWeek), "13.05.2024 13.05.2024");
  EXPECT_EQ(boxesOn(3, 3, kThisWeek), "26.02.2024 03.03.2024") << "a Sunday";
  EXPECT_EQ(boxesOn(5, 17, kThisMonth), "01.05.2024 17.05.2024");
  EXPECT_EQ(boxesOn(6, 30, kThisQuarter), "01.04.2024 30.06.2024");
  EXPECT_EQ(boxesOn(5, 17, kThisYear), "01.01.2024 17.05.2024");
  EXPECT_EQ(boxesOn(5, 17, kLastYear), "01.01.2023 31.12.2023");
}

TEST_F(PeriodTest, DaysCanBeTypedInShort) {
  const DateTime today = clock.Today();
  const platform::ShortDate iso(platform::ShortDate::Order::kYearMonthDay, '-', true);
  const platform::ShortDate american(platform::ShortDate::Order::kMonthDayYear, '/', false);
  const Table<const char*, const platform::ShortDate&, const char*> cases = {
      {"1.11.", shortDate, "2024-11-01"},    {"1.11", shortDate, "2024-11-01"},
      {"11/1", american, "2024-11-01"},      {"11-01", iso, "2024-11-01"},
      {"01112026", shortDate, "2026-11-01"}, {"011126", shortDate, "2026-11-01"},
      {"11012026", american, "2026-11-01"},  {"20261101", iso, "2026-11-01"},
      {"СЕГОДНЯ", shortDate, "2024-05-17"},  {"Aujourd’hui", shortDate, "2024-05-16"}};
  for (const auto& [text, form, expected] : cases) {
    const auto day = ReadDateEntry(text, form, today, texts);
    EXPECT_EQ(day ? day->ToIso().substr(0, 10) : "none", expected) << text;
  }
  for (const char* text :
       {"", "1", "1.", "32.1.", "13.13", "0111202", "99999999", "x", ".", "1.1.1.1", "morgen"}) {
    EXPECT_FALSE(ReadDateEntry(text, shortDate, today, texts)) << text;
  }
}

}  // namespace
}  // namespace varnlog::dialogs
