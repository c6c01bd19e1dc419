#include <sstream>

#include <gtest/gtest.h>

#include "platform/ShortDate.h"
#include "tests/support/Table.h"

namespace varnlog::platform {
namespace {

const DateTime kFirstOfMay = DateTime::FromIso("1960-05-01 07:08:09").value();

TEST(ShortDate, WritesTheLocalesFormWithAWholeYear) {
  const Table<const char*, const char*> rows = {
      {"dd.MM.yy", "01.05.1960"}, {"M/d/yy", "5/1/1960"},         {"y-MM-dd", "1960-05-01"},
      {"dd/MM/y", "01/05/1960"},  {"d-M-yy", "1-5-1960"},         {"d.MM.yy 'г'.", "1.5.1960"},
      {"yy. M. d.", "1960.5.1"},  {"dd.MM.y 'г'.", "01.05.1960"}, {"'d'dd/MM/yyyy", "01/05/1960"},
      {"", "01.05.1960"},         {"MMMM", "01.05.1960"},         {"yy/dd/MM", "01.05.1960"},
      {"ddMMyy", "01.05.1960"}};
  for (const auto& [pattern, expected] : rows) {
    EXPECT_EQ(ShortDate::FromPattern(pattern).Format(kFirstOfMay), expected) << pattern;
  }
}

TEST(ShortDate, ShowsATimeOnlyWhenThereIsOne) {
  const ShortDate form;
  EXPECT_EQ(form.FormatGeneral(kFirstOfMay), "01.05.1960 07:08:09");
  EXPECT_EQ(form.FormatGeneral(kFirstOfMay.DatePart()), "01.05.1960");
  EXPECT_EQ(form.FormatGeneral({}), "");
  EXPECT_EQ(form.Format({}), "");
}

TEST(ShortDate, ReadsWhatPeopleType) {
  const ShortDate german;
  const ShortDate american = ShortDate::FromPattern("M/d/yy");
  const ShortDate iso = ShortDate::FromPattern("y-MM-dd");
  const Table<const ShortDate&, const char*, const char*> rows = {
      {german, "1.5.1960", "1960-05-01 00:00:00"},           {german, "  01/05/60 ", "1960-05-01 00:00:00"},
      {german, "01-05-29", "2029-05-01 00:00:00"},           {german, "01-05-30", "1930-05-01 00:00:00"},
      {german, "1960-05-01", "1960-05-01 00:00:00"},         {german, "1.5.1960 7:08", "1960-05-01 07:08:00"},
      {german, "1.5.1960  07:08:09", "1960-05-01 07:08:09"}, {american, "5/1/1960", "1960-05-01 00:00:00"},
      {american, "1960-05-01", "1960-05-01 00:00:00"},       {iso, "60-5-1", "1960-05-01 00:00:00"}};
  for (const auto& [form, text, expected] : rows) {
    const auto date = form.Parse(text);
    ASSERT_TRUE(date) << text;
    EXPECT_EQ(date->ToIso(), expected) << text;
  }
}

TEST(ShortDate, RefusesWhatIsNoDate) {
  const ShortDate german;
  std::istringstream lines(
      "\n "
      "\nheute\n30.2.2001\n1.13.2001\n0.1.2001\n1.5\n1.5.\n1.5.6\n1.5.160\n1.5.19600\n1.5/1960\n1..5.1960\n"
      "1.5.1960x\n1.5.1960 24:00\n1.5.1960 7\n1.5.1960 "
      "7:08:09:10\n1.5.1960T07:08\n99999999999999999999.1.2001\n"
      "-1.5.1960\n1 .5.1960");
  for (std::string text; std::getline(lines, text);) {
    EXPECT_FALSE(german.Parse(text)) << text;
  }
}

TEST(ShortDate, ReadsBackItsOwnForm) {
  for (const char* pattern : {"dd.MM.yy", "M/d/yy", "y-MM-dd", "d-M-yy", "yyyy/M/d"}) {
    const ShortDate form = ShortDate::FromPattern(pattern);
    EXPECT_EQ(form.Parse(form.FormatGeneral(kFirstOfMay)), kFirstOfMay) << pattern;
  }
}

}  // namespace
}  // namespace varnlog::platform
