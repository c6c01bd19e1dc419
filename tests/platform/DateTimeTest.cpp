#include <gtest/gtest.h>

#include "platform/Clock.h"
#include "platform/DateTime.h"
#include "tests/support/Table.h"

namespace varnlog::platform {
namespace {

TEST(DateTime, KeepsEveryDayOfItsCalendar) {
  // Counted up day by day, so that a slip at any month's or century's end shows.
  auto day = DateTime::FromCivil(100, 1, 1).value();
  int year = 100;
  int month = 1;
  int dayOfMonth = 1;
  while (year < 10000) {
    ASSERT_EQ(day.Year(), year);
    ASSERT_EQ(day.Month(), month);
    ASSERT_EQ(day.Day(), dayOfMonth);
    ASSERT_EQ(DateTime::FromCivil(year, month, dayOfMonth), day);
    day = DateTime::FromSeconds(day.SecondsSinceEpoch() + 86400);
    if (DateTime::FromCivil(year, month, dayOfMonth + 1)) {
      ++dayOfMonth;
    } else {
      dayOfMonth = 1;
      month = month % 12 + 1;
      if (month == 1) ++year;
    }
  }
}

TEST(DateTime, KnowsDaysThatAreInNoCalendar) {
  const Table<int, int, int, int, int, int, bool> rows = {
      {2000, 2, 29, 0, 0, 0, true},  {1900, 2, 29, 0, 0, 0, false},    {2024, 2, 30, 0, 0, 0, false},
      {2023, 4, 31, 0, 0, 0, false}, {2023, 13, 1, 0, 0, 0, false},    {2023, 0, 1, 0, 0, 0, false},
      {99, 12, 31, 0, 0, 0, false},  {9999, 12, 31, 23, 59, 59, true}, {10000, 1, 1, 0, 0, 0, false},
      {2023, 1, 1, 24, 0, 0, false}, {2023, 1, 1, 0, 60, 0, false},    {2023, 1, 1, 0, 0, -1, false}};
  for (const auto& [year, month, day, hour, minute, second, valid] : rows) {
    EXPECT_EQ(DateTime::FromCivil(year, month, day, hour, minute, second).has_value(), valid)
        << year << '-' << month << '-' << day << ' ' << hour << ':' << minute;
  }
}

TEST(DateTime, CarriesOverflowingPartsLikeTheCalendar) {
  const Table<int, int, int, const char*> rows = {
      {2001, 2, 31, "2001-03-03 00:00:00"}, {2001, 13, 1, "2002-01-01 00:00:00"},
      {2001, 0, 1, "2000-12-01 00:00:00"},  {2001, -11, 1, "2000-01-01 00:00:00"},
      {2001, 3, 0, "2001-02-28 00:00:00"},  {2001, 3, -365, "2000-02-29 00:00:00"}};
  for (const auto& [year, month, day, expected] : rows) {
    EXPECT_EQ(DateTime::FromSerial(year, month, day).ToIso(), expected);
  }
  EXPECT_FALSE(DateTime::FromSerial(99, 12, 31).IsSet());
  EXPECT_FALSE(DateTime::FromSerial(9999, 12, 32).IsSet());
  EXPECT_FALSE(DateTime::FromSerial(2'000'000'000, 2'000'000'000, 2'000'000'000).IsSet());
}

TEST(DateTime, ReadsBackWhatItWritesAndNothingElse) {
  for (const char* text : {"1879-12-31 23:59:59", "1899-12-29 00:00:01", "1899-12-30 00:00:01",
                           "0100-01-01 00:00:00", "9999-12-31 23:59:59", "2024-02-29 12:34:56"}) {
    const auto read = DateTime::FromIso(text);
    ASSERT_TRUE(read) << text;
    EXPECT_EQ(read->ToIso(), text);
  }
  EXPECT_EQ(DateTime::FromIso("2024-02-29"), DateTime::FromCivil(2024, 2, 29));
  for (const char* text :
       {"", "2024", "2024-02-30", "2024-2-29", "2024/02/29", "2024-02-29T12:34:56", "2024-02-29 12:34",
        "2024-02-29 24:00:00", "2024-02-29 12:34:5x", "+024-02-29", "2024-02-29 12:34:56 "}) {
    EXPECT_FALSE(DateTime::FromIso(text)) << text;
  }
}

TEST(DateTime, TakesDateAndTimeApartBeforeAndAfterItsZero) {
  const auto early = DateTime::FromIso("1880-01-01 06:07:08").value();
  EXPECT_EQ(early.Hour(), 6);
  EXPECT_EQ(early.Minute(), 7);
  EXPECT_EQ(early.Second(), 8);
  EXPECT_EQ(early.DatePart().ToIso(), "1880-01-01 00:00:00");
  const auto late = DateTime::FromIso("2024-05-06 22:23:24").value();
  EXPECT_EQ(early.AtTimeOf(late).ToIso(), "1880-01-01 22:23:24");
  EXPECT_EQ(late.AtTimeOf(DateTime()).ToIso(), "2024-05-06 00:00:00");
  EXPECT_LT(early, late);
}

}  // namespace
}  // namespace varnlog::platform
