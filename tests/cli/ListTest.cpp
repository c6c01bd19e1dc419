#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/Installation.h"
#include "tests/support/Table.h"

namespace varnlog::cli {
namespace {

using testing::HasSubstr;
using testing::Not;

/// One log for all tests of this file: they only read it.
class ListCommandTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    installation_ = std::make_unique<Installation>("list");
    installation_->Reports({
        NewExposure("Müller", "XI", "01.03.2004", "08:00:01"),
        NewExposure("Müller", "XP", "02.03.2004", "08:00:02"),
        NewExposure("Müller", "XC", "03.03.2004", "23:59:59"),
        NewExposure("Maier", "XS", "02.03.2004", "08:00:04"),
        NewExposure("Maier", "XV", "03.03.2004", "00:00:00"),
        NewExposure("Maier", "XI", "04.03.2004", "08:00:06"),
        NewExposure("Müller", "XI", "04.03.2004", "08:00:07"),
    });
    EXPECT_EQ(installation_->Ctl("update").out, "read 7, added 7, changed 0, skipped 0\n");
  }
  static void TearDownTestSuite() { installation_.reset(); }

  static std::unique_ptr<Installation> installation_;
};

std::unique_ptr<Installation> ListCommandTest::installation_;

/// Each exposure's time stamp occurs once in a list that holds it.
std::set<int> RowsIn(const std::string& list, const std::vector<std::string>& stamps) {
  std::set<int> rows;
  for (std::size_t i = 0; i < stamps.size(); ++i) {
    const auto at = list.find(stamps[i]);
    if (at == std::string::npos) continue;
    rows.insert(static_cast<int>(i) + 1);
    EXPECT_EQ(list.find(stamps[i], at + 1), std::string::npos) << stamps[i] << " is listed twice";
  }
  return rows;
}

TEST_F(ListCommandTest, EachSelectionListsItsRowsInEveryFormat) {
  const std::vector<std::string> stamps = {
      "2004-03-01 08:00:01", "2004-03-02 08:00:02", "2004-03-03 23:59:59", "2004-03-02 08:00:04",
      "2004-03-03 00:00:00", "2004-03-04 08:00:06", "2004-03-04 08:00:07"};
  const std::string period = " --from 02.03.2004 --to 2004-03-03";
  const std::string patient = " --patient 'müller, Käthe *01.02.1960'";
  const Table<std::string, std::set<int>> cases = {{"", {1, 2, 3, 4, 5, 6, 7}},
                                                   {period, {2, 3, 4, 5}},
                                                   {patient, {1, 2, 3, 7}},
                                                   {patient + period, {2, 3}},
                                                   {" --type XI --from 1.3.2004 --to 4.3.2004", {1, 6, 7}},
                                                   {" --type XP" + period, {2}},
                                                   {" --type XC" + period, {3}},
                                                   {" --type XS" + period, {4}},
                                                   {" --type XV" + period, {5}},
                                                   {" --type XI" + period, {}}};
  for (const auto& [selection, rows] : cases) {
    for (const std::string format : {"table", "csv", "json"}) {
      const Ended run = installation_->Ctl("list --format " + format + selection);
      EXPECT_EQ(run.status, 0) << selection << run.err;
      EXPECT_EQ(RowsIn(run.out, stamps), rows) << format << selection;
    }
  }
}

TEST_F(ListCommandTest, CsvHoldsTheStoredFieldsInTheirOrder) {
  const Ended run = installation_->Ctl("list --format csv --type XC --from 3.3.2004 --to 3.3.2004");
  EXPECT_EQ(run.out,
            "tXrayCulIntIDPk,tXraySName,tXraySFirstname,tXrayDBirthday,tXraySSex,tXraySPreg,tXrayBEdPreg,"
            "tXrayTs,tXraySDr,tXrayBEdDr,tXraySType,tXrayBEdType,tXraySDiagRetry,tXrayBEdDiagRetry,"
            "tXraySRegio,tXrayBEdRegio,tXraySRadDur,tXrayBEdRadDur,tXraySVolt,tXrayBEdVolt,tXraySCur,"
            "tXrayBEdCur,tXraySDose,tXrayBEdDose,tXraySComment\r\n"
            "3,Müller,Käthe,1960-02-01 00:00:00,f,N,1,2004-03-03 23:59:59,Dr. Weiß,0,XC,0,,1,48,0,120,0,65,0,"
            "8,0,3.4,0,\r\n");
}

TEST_F(ListCommandTest, JsonTellsNullFromEmptyAndNumbersFromTexts) {
  const Ended run = installation_->Ctl("list --format json --type XC --from 3.3.2004 --to 3.3.2004");
  EXPECT_THAT(run.out, testing::StartsWith("[\n{\"tXrayCulIntIDPk\":3,\"tXraySName\":\"Müller\","));
  EXPECT_THAT(run.out, testing::EndsWith("\"tXraySComment\":null}\n]\n"));
  EXPECT_THAT(run.out, HasSubstr("\"tXrayBEdPreg\":1,\"tXrayTs\":\"2004-03-03 23:59:59\""));
  EXPECT_THAT(run.out, HasSubstr("\"tXraySVolt\":\"65\""));
}

TEST_F(ListCommandTest, DisplayShowsTheGrid) {
  // Müller has one byte more than it has columns.
  const std::string table = installation_->Ctl("list --display --from 3.3.2004 --to 3.3.2004").out;
  const auto columnOf = [&](const char* type) {
    return table.find(type) - table.rfind('\n', table.find(type));
  };
  EXPECT_EQ(columnOf("XC"), columnOf("XV") + 1) << table;
  const Ended run = installation_->Ctl("list --display --format csv --from 3.3.2004 --to 3.3.2004");
  EXPECT_THAT(
      run.out,
      testing::AllOf(HasSubstr(",mGycm2,"), HasSubstr("\r\n1,03.03.2004,\"Müller, Käthe *01.02.1960\","),
                     HasSubstr(",XC,48,120,65,8,3.4,,Dr. Weiß,\r\n2,03.03.2004,\"Maier, Käthe")));
}

TEST_F(ListCommandTest, WithoutRowsEachFormatIsStillWhole) {
  const std::string nothing = " --from 1.1.1990 --to 2.1.1990";
  EXPECT_EQ(installation_->Ctl("list --format json" + nothing).out, "[]\n");
  EXPECT_THAT(installation_->Ctl("list --format csv" + nothing).out, testing::EndsWith("tXraySComment\r\n"));
  EXPECT_THAT(installation_->Ctl("list" + nothing).out, HasSubstr("tXrayCulIntIDPk"));
}

TEST_F(ListCommandTest, CombinationsThatAreNoSelectionAreWrongUsage) {
  for (const std::string wrong :
       {"--type XI", "--from 1.1.2004", "--to 1.1.2004", "--type XX --from 1.1.2004 --to 2.1.2004",
        "--patient Müller", "--patient 'Müller, Käthe'", "--patient 'Müller, Käthe *30.2.2001'",
        "--from 30.2.2001 --to 1.3.2001", "--from 1.13.2001 --to 1.3.2001", "--format xml", "--nonsense",
        "--type XI --patient 'Müller, Käthe *01.02.1960' --from 1.1.2004 --to 2.1.2004"}) {
    const Ended run = installation_->Ctl("list " + wrong);
    EXPECT_EQ(run.status, 2) << wrong;
    EXPECT_EQ(run.out, "") << wrong;
    EXPECT_NE(run.err, "") << wrong;
  }
  EXPECT_EQ(installation_->Ctl("").status, 2);
  EXPECT_EQ(installation_->Ctl("nonsense").status, 2);
  EXPECT_EQ(installation_->Ctl("--help").status, 0);
}

}  // namespace
}  // namespace varnlog::cli
