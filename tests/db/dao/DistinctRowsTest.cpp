#include <vector>

#include <gmock/gmock.h>

#include "db/dao/sqlite/FileDialect.h"
#include "tests/db/dao/ConnectionFixture.h"

namespace varnlog::dao {
namespace {

using ::testing::ElementsAre;

const std::vector<std::string> kPatient = {"tXraySName", "TXRAYSFIRSTNAME", "tXrayDBirthday"};

class DistinctRowsTest : public ConnectionTest {
 protected:
  std::shared_ptr<Connection> Find() { return rows_.Find(log_->File(), *log_->Table("txray"), kPatient); }

  /// The columns of each row, separated by "|".
  static std::vector<std::string> Rows(Connection& connection, const std::string& sql) {
    std::vector<std::string> rows;
    Statement statement(connection, sql);
    while (statement.Step()) {
      std::string row;
      for (int i = 0; i < statement.ColumnCount(); ++i)
        row += (i == 0 ? "" : "|") + std::string(statement.Text(i));
      rows.push_back(row);
    }
    return rows;
  }

  std::vector<std::string> Names() {
    const std::shared_ptr<Connection> found = Find();
    if (found == nullptr) return {"nothing"};
    return Rows(*found, "SELECT tXraySName FROM TXray");
  }

  DistinctRows rows_;
};

TEST_F(DistinctRowsTest, HoldsEachCombinationOnceInOrder) {
  Add(*log_,
      "('Weiß', 'Eva', '1961-03-12 00:00:00'), ('Müller', 'Hans', '1961-03-12 00:00:00'), "
      "('Müller', 'Hans', '1961-03-12 00:00:00'), ('Müller', 'Hans', '1960-01-01 00:00:00'), "
      "('MÜLLER', 'Hans', NULL), ('müller', 'hans', NULL), (NULL, '', NULL), ('007', '7', NULL)");
  const std::shared_ptr<Connection> found = Find();
  ASSERT_NE(found, nullptr);
  EXPECT_THAT(Rows(*found, "SELECT *, typeof(tXraySName) FROM TXray"),
              ElementsAre("|||1|null", "007|7||2|text", "MÜLLER|Hans||3|text", "müller|hans||3|text",
                          "Müller|Hans|1960-01-01 00:00:00|4|text", "Müller|Hans|1961-03-12 00:00:00|5|text",
                          "Weiß|Eva|1961-03-12 00:00:00|6|text"));
}

TEST_F(DistinctRowsTest, GivesStatementsTheAnswerOfTheTable) {
  AddAtRandom(2'000);
  for (const char* where : {"([tXraySName] & ', ' & [tXraySFirstname]) Like 'mü*'",
                            "tXraySName Like '?*' And tXraySFirstname Is Null",
                            "tXraySName = 'WEISS' And tXrayDBirthday = #3/12/1961#",
                            "tXrayDBirthday > #1/1/1900# Or tXraySName = ''"}) {
    const auto statement = ParseSelect(
        "SELECT DISTINCT tXraySName, tXraySFirstname, tXrayDBirthday FROM TXray WHERE " + std::string(where));
    // Which of two texts that differ in case stands for both is left open, so only what they fold to counts.
    const std::string sql =
        "SELECT DISTINCT lower(replace(replace(tXraySName, 'Ü', 'ü'), 'ß', 'ss')), "
        "lower(replace(replace(tXraySFirstname, 'Ü', 'ü'), 'ß', 'ss')), tXrayDBirthday FROM TXray WHERE " +
        statement.where + " ORDER BY 1, 2, 3";
    const auto expected = Rows(log_->File(), sql);
    ASSERT_FALSE(expected.empty()) << where;
    const std::shared_ptr<Connection> found = Find();
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(Rows(*found, sql), expected) << where;
  }
}

TEST_F(DistinctRowsTest, FollowsEveryChangeOfTheFile) {
  EXPECT_THAT(Names(), ElementsAre());
  Add(*log_, "('a', '', NULL)");
  EXPECT_THAT(Names(), ElementsAre("a"));

  const auto other = FileStorage::Open(path_, {}, state_);
  Add(*other, "('b', '', NULL)");
  EXPECT_THAT(Names(), ElementsAre("a", "b"));
  other->File().Execute("DELETE FROM TXray WHERE tXraySName = 'a'");
  EXPECT_THAT(Names(), ElementsAre("b"));

  log_->BeginWork();
  Add(*log_, "('c', '', NULL)");
  EXPECT_THAT(Names(), ElementsAre("nothing"));
  log_->RollbackWork();
  EXPECT_THAT(Names(), ElementsAre("b"));
}

TEST_F(DistinctRowsTest, KeepsTheRowsWhileNothingChanges) {
  Add(*log_, "('a', '', NULL)");
  const std::shared_ptr<Connection> found = Find();
  ASSERT_NE(found, nullptr);
  found->Execute("INSERT INTO TXray VALUES ('mark', '', NULL, 2)");
  EXPECT_THAT(Names(), ElementsAre("a", "mark"));
  Add(*log_, "('b', '', NULL)");
  EXPECT_THAT(Names(), ElementsAre("a", "b"));
  EXPECT_EQ(Find(), found);  // statements prepared on it stay usable
}

TEST_F(DistinctRowsTest, LeavesToTheTableWhatIsTooVariedOrUnknown) {
  AddDifferent(100'001);
  EXPECT_EQ(Find(), nullptr);
  log_->File().Execute("DELETE FROM TXray WHERE tXraySName = '1'");
  EXPECT_NE(Find(), nullptr);
  EXPECT_EQ(rows_.Find(log_->File(), *log_->Table("TXray"), {"tXraySName", "unknown"}), nullptr);
  EXPECT_EQ(rows_.Find(log_->File(), *log_->Table("TXray"), {}), nullptr);
}

}  // namespace
}  // namespace varnlog::dao
