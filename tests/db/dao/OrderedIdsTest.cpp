#include <limits>
#include <optional>
#include <vector>

#include <gmock/gmock.h>

#include "db/dao/DBEngine.h"
#include "db/dao/sqlite/rows/OrderedIds.h"
#include "db/dao/sqlite/rows/StatementIds.h"
#include "db/dao/text/Collation.h"
#include "tests/db/dao/ConnectionFixture.h"

namespace varnlog::dao {
namespace {

using ::testing::ElementsAre;
using Ids = std::vector<std::int64_t>;

class OrderedIdsTest : public ConnectionTest {
 protected:
  OrderedIdsTest() { AddAtRandom(1'000); }

  std::optional<Ids> Ordered(const std::string& rest) {
    Parameters parameters;
    const auto select = log_->Selects().Find(*log_, "SELECT TXray.* FROM TXray " + rest, parameters);
    return log_->Ordered().Find(log_->File(), *select, parameters);
  }

  Ids OrderedByStorage(const std::string& rest) {
    Parameters parameters;
    auto select = log_->Selects().Find(*log_, "SELECT TXray.* FROM TXray " + rest, parameters);
    StatementIds source(log_, std::move(select), std::move(parameters));
    Ids ids;
    while (!source.Fetch(std::numeric_limits<std::size_t>::max() - 1, ids)) {
    }
    return ids;
  }
};

TEST_F(OrderedIdsTest, GivesTheOrderOfTheStorage) {
  for (const char* rest :
       {"ORDER BY TXray.tXraySName;", "ORDER BY TXray.tXraySName DESC;",
        "ORDER BY TXray.tXraySName , TXray.tXraySFirstname , TXray.tXrayDBirthday;",
        "ORDER BY TXray.tXraySName DESC , TXray.tXraySFirstname DESC , TXray.tXrayDBirthday DESC;",
        "WHERE tXraySName = 'MÜLLER' ORDER BY tXraySFirstname DESC, tXrayDBirthday",
        "WHERE tXraySName = 'weiss' ORDER BY tXraySFirstname, tXrayDBirthday DESC",
        "WHERE tXraySName = 'nobody' ORDER BY tXraySFirstname"}) {
    const auto ids = Ordered(rest);
    ASSERT_TRUE(ids.has_value()) << rest;
    EXPECT_EQ(*ids, OrderedByStorage(rest)) << rest;
  }
}

TEST_F(OrderedIdsTest, KnowsTheLastOrderAndItsReverseUntilTheFileChanges) {
  const std::string ascending = "ORDER BY tXraySName, tXrayDBirthday";
  const std::string descending = "ORDER BY tXraySName DESC, tXrayDBirthday DESC";
  const auto first = Ordered(ascending);
  EXPECT_EQ(Ordered(ascending), first);
  EXPECT_EQ(Ordered(descending), OrderedByStorage(descending));
  EXPECT_EQ(Ordered("ORDER BY tXraySName DESC, tXrayDBirthday"),
            OrderedByStorage("ORDER BY tXraySName DESC, tXrayDBirthday"));
  ASSERT_EQ(Ordered(ascending), first);
  Add(*log_, "('aaa', '', NULL)");
  EXPECT_EQ(Ordered(descending), OrderedByStorage(descending));

  log_->BeginWork();
  Add(*log_, "('bbb', '', NULL)");
  EXPECT_EQ(Ordered(ascending)->size(), 1'002U);
  log_->RollbackWork();
  EXPECT_EQ(Ordered(ascending)->size(), 1'001U);
}

TEST_F(OrderedIdsTest, LeavesOtherOrdersToTheStorage) {
  for (const char* rest : {"", "ORDER BY tXrayDBirthday", "ORDER BY tXrayBEdDr",
                           "ORDER BY tXraySName, tXrayCulIntIDPk", "ORDER BY tXraySName & tXraySFirstname"}) {
    EXPECT_FALSE(Ordered(rest).has_value()) << rest;
  }
  AddDifferent(200'000, " is the number in a name that is long and quite different" + std::string(40, 'x'));
  EXPECT_FALSE(Ordered("ORDER BY tXraySName").has_value());
}

TEST_F(OrderedIdsTest, RecordSetsUseIt) {
  Database log(log_);
  const auto byName =
      log.OpenRecordset("SELECT TXray.* FROM TXray WHERE tXraySName <> '' ORDER BY tXraySName DESC;");
  EXPECT_EQ(FoldCase(byName->Fields("tXraySName").Text()), "weiss");

  const auto patients = log.OpenRecordset(
      "SELECT DISTINCT tXraySName AS Surname, tXrayDBirthday FROM TXray WHERE tXraySName Like 'm*' And "
      "tXrayDBirthday Is Not Null");
  std::vector<std::string> found;
  for (; !patients->IsEOF(); patients->MoveNext()) {
    found.push_back(FoldCase(patients->Fields("surname").Text()) + " " +
                    std::string(patients->Fields("tXrayDBirthday").Text().substr(0, 4)));
  }
  EXPECT_THAT(found, ElementsAre("mueller 1880", "mueller 1961", "müller 1880", "müller 1961"));
  EXPECT_EQ(patients->Type(), RecordsetType::kSnapshot);
}

}  // namespace
}  // namespace varnlog::dao
