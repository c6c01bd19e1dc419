#include <algorithm>
#include <filesystem>
#include <limits>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "db/dao/DBEngine.h"
#include "db/dao/rows/IdSource.h"
#include "db/dao/rows/OrderedIds.h"
#include "db/dao/sqlite/Collation.h"

namespace varnlog::dao {
namespace {

using ::testing::ElementsAre;
using Ids = std::vector<std::int64_t>;

class OrderedIdsTest : public ::testing::Test {
 protected:
  OrderedIdsTest() {
    std::filesystem::remove(path_);
    log_ = Connection::Create(path_, state_);
    log_->Execute(
        "CREATE TABLE TXray (tXrayCulIntIDPk INTEGER PRIMARY KEY, tXraySName TEXT(32) COLLATE JET, "
        "tXraySFirstname TEXT(32) COLLATE JET, tXrayDBirthday DATETIME, tXrayBEdDr YESNO)");
    std::mt19937 random(11);
    const char* const names[] = {"'Müller'", "'MÜLLER'",  "'Mueller'", "'Weiß'",
                                 "'weiss'",  "'O''Neil'", "NULL",      "''"};
    const char* const dates[] = {"'1961-03-12 00:00:00'", "'1880-01-01 00:00:00'", "NULL"};
    std::string values;
    for (int i = 0; i < 1'000; ++i) {
      values += std::string(i == 0 ? "" : ", ") + "(" + names[random() % 8] + ", " + names[random() % 8] +
                ", " + dates[random() % 3] + ")";
    }
    Add(values);
  }
  ~OrderedIdsTest() override {
    log_->Close();
    std::filesystem::remove(path_);
  }

  void Add(const std::string& values) {
    log_->Execute("INSERT INTO TXray (tXraySName, tXraySFirstname, tXrayDBirthday) VALUES " + values);
  }

  std::optional<Ids> Ordered(const std::string& rest) {
    Parameters parameters;
    const auto select = log_->Selects().Find(*log_, "SELECT TXray.* FROM TXray " + rest, parameters);
    return log_->Ordered().Find(*log_, *select, parameters);
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

  std::string path_ = (std::filesystem::temp_directory_path() /
                       ("varnlog ordered ids ä " + std::to_string(::getpid()) + ".mdb"))
                          .string();
  std::shared_ptr<EngineState> state_ = std::make_shared<EngineState>();
  std::shared_ptr<Connection> log_;
};

TEST_F(OrderedIdsTest, GivesTheOrderOfTheStorage) {
  for (const char* rest :
       {"ORDER BY TXray.tXraySName;", "ORDER BY TXray.tXraySName DESC;",
        "ORDER BY TXray.tXraySName , TXray.tXraySFirstname , TXray.tXrayDBirthday;",
        "ORDER BY TXray.tXraySName DESC , TXray.tXraySFirstname DESC , TXray.tXrayDBirthday DESC;",
        "WHERE tXraySName = 'MÜLLER' ORDER BY tXraySFirstname DESC, tXrayDBirthday",
        "WHERE tXraySName = 'weiss' ORDER BY tXraySFirstname DESC, tXrayDBirthday",
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
  Add("('aaa', '', NULL)");
  EXPECT_EQ(Ordered(descending), OrderedByStorage(descending));

  log_->BeginWork();
  Add("('bbb', '', NULL)");
  EXPECT_EQ(Ordered(ascending)->size(), 1'002U);
  log_->RollbackWork();
  EXPECT_EQ(Ordered(ascending)->size(), 1'001U);
}

TEST_F(OrderedIdsTest, LeavesOtherOrdersToTheStorage) {
  for (const char* rest : {"", "ORDER BY tXrayDBirthday", "ORDER BY tXrayBEdDr",
                           "ORDER BY tXraySName, tXrayCulIntIDPk", "ORDER BY tXraySName & tXraySFirstname"}) {
    EXPECT_FALSE(Ordered(rest).has_value()) << rest;
  }
  log_->Execute(
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 200000) "
      "INSERT INTO TXray (tXraySName) SELECT 'a long and quite different name of number ' || i || "
      "'xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx' FROM n");
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
