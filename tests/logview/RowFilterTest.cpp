#include <gmock/gmock.h>

#include "logview/RowFilter.h"
#include "tests/logview/LogFixture.h"
#include "tests/support/Table.h"

namespace varnlog::logview {
namespace {

using testing::ElementsAre;

class RowFilterTest : public LogFixture {
 protected:
  void SetUp() override {
    TakesExposure({{"tXraySName", "Müller"},
                   {"tXraySFirstname", "Käthe"},
                   {"tXrayDBirthday", "1960-02-01"},
                   {"tXraySType", "XI"},
                   {"tXraySRegio", "48"},
                   {"tXraySDr", "Dr. Weiß"}});
    TakesExposure(
        {{"tXraySName", "Muller"}, {"tXraySType", "XP"}, {"tXraySRegio", "P8"}, {"tXraySDr", "ZFA Peters"}});
    TakesExposure({{"tXraySName", "Sørensen"}, {"tXraySComment", "unscharf, [*] Müller"}});
    TakesExposure({});
    LosesRow(2);
    // A hole in the numbers, as a repaired log may have it.
    Damages("INSERT INTO TXray (tXrayCulIntIDPk, tXraySName) VALUES (2000000000, 'MULLER')");
  }

  std::vector<std::int64_t> Shown(RowFilter& filter) {
    while (!filter.Read(2)) {
    }
    const auto rows = filter.Shown(*Rows());
    return {rows->Ids().begin(), rows->Ids().end()};
  }
  RowFilter Filter(const intake::ToothScheme& scheme) {
    RowFilter filter(scheme, platform::ShortDate());
    filter.Renew(log_);
    return filter;
  }
};

TEST_F(RowFilterTest, FindsEachWordInWhatTheRowShows) {
  const Table<const char*, bool, std::vector<std::int64_t>> cases = {{"müller", true, {1, 3}},
                                                                     {"MULLER", true, {2'000'000'000}},
                                                                     {"muller", false, {1, 3, 2'000'000'000}},
                                                                     {"sorens", false, {3}},
                                                                     {"sorens", true, {}},
                                                                     {"weiss", true, {1}},
                                                                     {"Müller, Käthe *01.02.1960", true, {1}},
                                                                     {"käthe müll", true, {1}},
                                                                     {"müller sør", true, {3}},
                                                                     {"[*]", true, {3}},
                                                                     {"48", true, {1}},
                                                                     {"P8", true, {}},
                                                                     {"  ", true, {1, 3, 4, 2'000'000'000}}};
  RowFilter filter = Filter(fdi_);
  for (const auto& [text, accentsMatter, rows] : cases) {
    filter.SetQuery({text, accentsMatter});
    EXPECT_EQ(Shown(filter), rows) << text;
  }
  RowFilter american = Filter(us_);
  american.SetQuery({"32"});
  EXPECT_THAT(Shown(american), ElementsAre(1)) << "the tooth as it is shown";
}

TEST_F(RowFilterTest, KnowsWhichRowsLackAValue) {
  TakesExposure({{"tXraySSex", "m"}, {"tXrayBEdPreg", "1"}});
  TakesExposure({{"tXraySSex", "f"}, {"tXrayBEdPreg", "1"}});
  TakesExposure({{"tXrayBEdVolt", "1"}, {"tXraySVolt", "60"}, {"tXrayBEdDiagRetry", "1"}});
  TakesExposure({{"tXrayBEdVolt", "1"}, {"tXraySVolt", ""}});
  const std::int64_t first = 2'000'000'001;
  RowFilter filter = Filter(fdi_);
  EXPECT_EQ(filter.IncompleteAmong(*Rows()), std::nullopt) << "not read yet";
  filter.SetOnlyIncomplete(true);
  EXPECT_THAT(Shown(filter), ElementsAre(first + 1, first + 3));
  EXPECT_EQ(filter.IncompleteAmong(*Rows()), 2);
  EXPECT_EQ(filter.NextIncomplete(*Rows(), 0, 1), 5);
  EXPECT_EQ(filter.NextIncomplete(*Rows(), 4, -1), std::nullopt);
  filter.Note(first + 1, false);
  filter.Note(1, true);
  EXPECT_THAT(Shown(filter), ElementsAre(1, first + 3));
}

TEST_F(RowFilterTest, ReadsTheLogAnewOnlyWhenItWasChanged) {
  RowFilter filter = Filter(fdi_);
  filter.SetQuery({"neu"});
  EXPECT_THAT(Shown(filter), ElementsAre());
  TakesExposure({{"tXraySComment", "neu"}});
  EXPECT_THAT(Shown(filter), ElementsAre()) << "as long as nobody asks for it";
  filter.Renew(log_);
  EXPECT_THAT(Shown(filter), ElementsAre(2'000'000'001));
  filter.Renew(log_);
  EXPECT_TRUE(filter.Read(1)) << "nothing is left to be read";
}

}  // namespace
}  // namespace varnlog::logview
