#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "charts/Scale.h"
#include "statistics/ReferenceLevels.h"
#include "statistics/Retention.h"
#include "statistics/StatisticsReader.h"
#include "tests/support/LogFolder.h"

namespace varnlog::statistics {
namespace {

using platform::DateTime;
using testing::DoubleEq;
using testing::ElementsAre;

DateTime Day(const char* iso) {
  return DateTime::FromIso(iso).value();
}

class StatisticsTest : public testing::Test {
 protected:
  struct Taken {
    const char* when;
    const char* type;
    const char* dose;
    const char* retake = "";
    const char* person = "Lang";
    const char* born = "1980-05-05 00:00:00";
  };
  void Take(const std::vector<Taken>& exposures) {
    const auto rows = log_->OpenRecordset("TXray");
    for (const Taken& exposure : exposures) {
      rows->AddNew();
      for (const auto& [field, value] :
           std::initializer_list<std::pair<const char*, const char*>>{{"tXrayTs", exposure.when},
                                                                      {"tXraySType", exposure.type},
                                                                      {"tXraySDose", exposure.dose},
                                                                      {"tXraySDiagRetry", exposure.retake},
                                                                      {"tXraySDr", exposure.person},
                                                                      {"tXrayDBirthday", exposure.born}})
        if (*value != '\0') test::SetField(rows->Fields(field), value);
      rows->Update();
    }
  }
  [[nodiscard]] Statistics Read(std::vector<std::int64_t> ids) const {
    StatisticsReader reader(*log_, ids, Day("2026-11-22"));
    while (!reader.Read(2)) {
    }
    return reader.Take();
  }

  test::LogFolder folder_;
  std::shared_ptr<dao::Database> log_ = folder_.Make("log.mdb", "log.sql");
};

TEST_F(StatisticsTest, CountsWhatIsThereAndGuessesAtNothing) {
  Take({{"2026-11-16 08:30:00", "XI", "12,5"},  // a Monday
        {"2026-11-16 08:59:59", "XI", "n/a", "Wdh."},
        {"2026-11-17 09:00:00", "XI", "3.4 mGy", "N.d."},
        {"2026-12-01 23:00:00", "XP", "80", "", "Berg"},
        {"", "XP", "", "Wdh.", ""},
        {"2016-01-01 10:00:00", "XI", "10.5"},
        {"2016-01-02 10:00:00", "XI", "999"}});  // not among those asked for
  const Statistics read = Read({1, 2, 3, 4, 5, 6});
  EXPECT_EQ(read.all, (logview::Retakes{6, 2, 1}));
  EXPECT_EQ(read.undated, 1);
  EXPECT_EQ(read.months.at({2026, 11}).counted, (logview::Retakes{3, 1, 1}));
  EXPECT_EQ(read.months.at({2026, 11}).byType.at("XI"), 3);
  EXPECT_EQ(read.persons.at("Lang"), (logview::Retakes{4, 1, 1}));
  EXPECT_EQ(read.persons.at(""), (logview::Retakes{1, 1, 0}));
  EXPECT_THAT(read.weekdays, ElementsAre(2, 2, 0, 0, 1, 0, 0)) << "1 January 2016 was a Friday";
  EXPECT_EQ(read.hours[8], 2);
  EXPECT_EQ(read.hours[23], 1);
  const DoseOfType& dose = read.types.at("XI");
  EXPECT_EQ(dose.doses.Values(), 2);
  EXPECT_EQ(dose.doses.Unread(), 2) << "neither n/a nor a value with a unit of its own";
  EXPECT_DOUBLE_EQ(dose.doses.Spread()->median, 11.5);
  EXPECT_THAT(dose.latest, ElementsAre(DoubleEq(12.5), DoubleEq(10.5))) << "the newest first";
  EXPECT_EQ(read.types.at("XP").doses.Empty(), 1);
}

TEST_F(StatisticsTest, QuartilesLieBetweenValues) {
  Take({{"2026-01-01 08:00:00", "XI", "1"},
        {"2026-01-01 08:00:00", "XI", "4"},
        {"2026-01-01 08:00:00", "XI", "2"},
        {"2026-01-01 08:00:00", "XI", "2"},
        {"2026-01-01 08:00:00", "XI", "10"}});
  const auto spread = Read({1, 2, 3, 4, 5}).types.at("XI").doses.Spread();
  EXPECT_DOUBLE_EQ(spread->lower, 2);
  EXPECT_DOUBLE_EQ(spread->median, 2);
  EXPECT_DOUBLE_EQ(spread->upper, 4);
  EXPECT_DOUBLE_EQ(Read({1, 2}).types.at("XI").doses.Spread()->lower, 1.75);
  EXPECT_TRUE(Read({}).types.empty());
}

TEST(Retention, EndsAfterTenYearsAndForMinorsWithTheir28thBirthday) {
  struct Case {
    const char* taken;
    const char* born;
    const char* until;
  };
  for (const Case& c :
       {Case{"2010-03-01", "1980-01-01", "2020-03-01"}, Case{"2010-03-01", "2000-06-15", "2028-06-15"},
        Case{"2010-03-01", "1992-03-01", "2020-03-01"},  // of age on that day
        Case{"2010-03-01", "1992-03-02", "2020-03-02"}}) {
    EXPECT_EQ(KeptUntil(Day(c.taken), Day(c.born)).ToIso().substr(0, 10), c.until)
        << c.taken << ' ' << c.born;
  }
  const Retention retention(Day("2020-03-02"));
  EXPECT_TRUE(retention.IsOver("2010-03-01 08:00:00", "1980-01-01 00:00:00"));
  EXPECT_FALSE(retention.IsOver("2010-03-02 08:00:00", "1980-01-01 00:00:00")) << "the last day";
  EXPECT_FALSE(retention.IsOver("2010-03-01 08:00:00", "")) << "nobody knows how old the patient was";
}

TEST(ReferenceLevelsTest, TheLatestThatHoldsCountsAndABadLineIsTold) {
  const auto read = ReadReferenceLevels(
      "type\tsince\tdose\tsource\r\nXI\t\t\tauthority\nXP\t2020-01-01\t100\told\nXP\t2023-01-01\t87,5\tnew\n"
      "XP\t2030-01-01\t50\tlater\nXC\t1.1.2020\t30\t\nXV\t2020-01-01\t30 mGy\t\n",
      Day("2026-11-22"));
  ASSERT_EQ(read.levels.size(), 1U);
  EXPECT_EQ(read.levels.at("XP"), (ReferenceLevel{Day("2023-01-01"), 87.5, "new"}));
  EXPECT_THAT(read.badLines, ElementsAre(6, 7));
  EXPECT_TRUE(ReadReferenceLevels(test::ReadFile(std::filesystem::path(VARNLOG_SOURCE_DIR) / "resources" /
                                                 "reference-levels.tsv"),
                                  Day("2026-11-22"))
                  .levels.empty())
      << "the levels are the authority's to give";
}

TEST(Scale, MarksAreRoundAndReachTheGreatestValue) {
  EXPECT_THAT(charts::AxisMarks(9, 5), ElementsAre(0, 2, 4, 6, 8, 10));
  EXPECT_THAT(charts::AxisMarks(0, 5).back(), DoubleEq(1));
  EXPECT_THAT(charts::AxisMarks(2, 5, true), ElementsAre(0, 1, 2)) << "nobody takes half an exposure";
  EXPECT_EQ(charts::DecimalsOf(charts::AxisMarks(0.9, 5)), 1);
  EXPECT_EQ(charts::DecimalsOf(charts::AxisMarks(5'000, 5)), 0);
}

}  // namespace
}  // namespace varnlog::statistics
