#include "db/dao/sql/SelectShape.h"
#include "tests/db/dao/EngineFixture.h"
#include "tests/support/Table.h"

namespace varnlog::dao {

namespace {

class SelectTest : public EngineTest {
 protected:
  SelectTest() : log_(Open(MakeLog())) {
    FillLog(*workspace_, *log_, 4);
    Damages(*log_,
            "UPDATE TXray SET tXraySName = 'O''Neil' WHERE rowid = 1;"
            "UPDATE TXray SET tXraySName = 'Müller' WHERE rowid IN (2, 3)");
  }

  [[nodiscard]] ErrorNumber Opening(const std::string& source,
                                    std::optional<RecordsetType> type = std::nullopt) {
    return ErrorOf([&] { static_cast<void>(log_->OpenRecordset(source, type)); });
  }
  [[nodiscard]] std::string Value(const std::string& key) {
    const auto rows = log_->OpenRecordset(
        "SELECT TConfig.tCfgSKey, TConfig.tCfgSSet From TConfig WHERE (((TConfig.tCfgSKey)='" + key + "'));");
    return rows->IsEOF() ? "none" : std::string(rows->Fields("tCfgSSet").Text());
  }

  std::shared_ptr<Database> log_;
};

TEST_F(SelectTest, EachSourceHasItsTypes) {
  using enum RecordsetType;
  const std::string fields = "SELECT tXraySName FROM TXray";
  const std::string distinct = "SELECT DISTINCT tXraySName FROM TXray";
  const std::string computed = "SELECT tXraySName & '!' AS Loud FROM TXray";
  EXPECT_EQ(log_->OpenRecordset("TXRAY")->Type(), kTable);
  EXPECT_EQ(log_->OpenRecordset("TXray", kDynaset)->Type(), kDynaset);
  EXPECT_EQ(log_->OpenRecordset(fields)->Type(), kDynaset);
  EXPECT_EQ(log_->OpenRecordset(fields, kSnapshot)->Type(), kSnapshot);
  EXPECT_EQ(log_->OpenRecordset(distinct)->Type(), kSnapshot);
  EXPECT_EQ(log_->OpenRecordset(computed)->Type(), kSnapshot);
  EXPECT_EQ(Opening(fields, kTable), kNotSupported);
  EXPECT_EQ(Opening(distinct, kDynaset), kNotSupported);
  EXPECT_EQ(Opening(computed, kDynaset), kNotSupported);
}

TEST_F(SelectTest, WhatIsNoSelectStatementOfAKnownTableIsAnError) {
  for (const auto& [source, number] : Table<const char*, ErrorNumber>{
           {"", kTableNotFound},
           {"TNone", kTableNotFound},
           {"SELECT * FROM sqlite_schema", kTableNotFound},
           {"SELECT tNone FROM TXray", kTooFewParameters},
           {"SELECT * FROM TXray WHERE rowid = 1", kTooFewParameters},
           {"SELECT * FROM TXray WHERE tXraySName = 'O'Neil'", kSyntaxError},
           {"SELECT * FROM TXray WHERE tXraySName = ''; DELETE FROM TXray --'", kSyntaxError},
           {"SELECT * FROM TXray; DELETE FROM TXray", kSyntaxError},
           {"DELETE FROM TXray", kTableNotFound}})
    EXPECT_EQ(Opening(source), number) << source;
  EXPECT_EQ(log_->OpenRecordset("TXray")->RecordCount(), 4);
}

// Statements of one shape share a translation, so that each must still get its own values.
TEST_F(SelectTest, StatementsThatDifferInTheirTextsOnlyKeepThemApart) {
  EXPECT_EQ(Value("DBVersion"), "1.1");
  EXPECT_EQ(Value("ReadOnly"), "0");
  EXPECT_EQ(Value("dbversion"), "1.1");
  EXPECT_EQ(Value("Nothing"), "none");
  EXPECT_EQ(Opening("SELECT * FROM TConfig WHERE tCfgSKey = 'O'Neil'"), kSyntaxError);
  EXPECT_EQ(Value("O''Neil"), "none");
  const auto count = [&](const std::string& where) {
    const auto rows = log_->OpenRecordset("SELECT * FROM TXray WHERE " + where);
    rows->Populate(1000);
    return rows->RecordCount();
  };
  EXPECT_EQ(count("tXraySName = 'O''Neil'"), 1);
  EXPECT_EQ(count("tXraySName = \"O'Neil\""), 1);
  EXPECT_EQ(count("tXraySName='MÜLLER'"), 2);
  EXPECT_EQ(count("tXraySName = 'P3' OR 'x' = 'x'"), 4);
  EXPECT_EQ(count("tXraySName = 'P3' OR 'x' = 'y'"), 1);
  EXPECT_EQ(count("tXraySName Like 'mü*' AND tXraySFirstname = 'anna'"), 2);
  EXPECT_EQ(count("tXraySName Like 'p*' AND tXraySFirstname = 'anna'"), 1);
  EXPECT_EQ(count("tXraySName = ''"), 0);
}

TEST_F(SelectTest, ComputedColumnsAndDistinctRowsAreSnapshots) {
  const auto rows = log_->OpenRecordset(
      "SELECT DISTINCT TXray.tXraySName, TXray.tXraySFirstname, TXray.tXrayDBirthday, "
      "[tXraySName] & \", \" & [tXraySFirstname] AS FullName FROM TXray "
      "WHERE ((([tXraySName] & \", \" & [tXraySFirstname]) Like 'm*'));");
  ASSERT_EQ(rows->RecordCount(), 1);
  EXPECT_EQ(rows->Fields("fullname").Text(), "Müller, Anna");
  EXPECT_EQ(rows->Fields("tXrayDBirthday").Date(), *platform::DateTime::FromCivil(1970, 1, 1));
  EXPECT_EQ(ErrorOf([&] { rows->Edit(); }), kNotSupported);
  Damages(*log_, "DELETE FROM TXray");
  EXPECT_EQ(rows->Fields("fullname").Text(), "Müller, Anna") << "a snapshot stays as it was taken";
}

TEST_F(SelectTest, ANewFieldIsFoundByStatementsThatWereRunBefore) {
  const char* const sql = "SELECT * FROM TXray";
  EXPECT_EQ(log_->OpenRecordset(sql)->FieldCount(), 25U);
  log_->TableDefs("TXray").Append({.name = "tXraySNote", .type = FieldType::kText, .size = 9});
  EXPECT_EQ(log_->OpenRecordset(sql)->FieldCount(), 26U);
}

TEST(SelectShapeTest, LiftsTheTextsBehindEqualsSigns) {
  for (const auto& [sql, wanted] :
       Table<const char*, std::vector<std::string>>{{"a='x'", {"x"}},
                                                    {"(a) = 'it''s' AND b = \"q\"\"q\"", {"it's", "q\"q"}},
                                                    {"a Like 'x*' AND [b='c'] = 'd'", {"d"}},
                                                    {"a=#1/2/2003# AND b>='z'", {"z"}},
                                                    {"'a'=b", {}}}) {
    std::string shape;
    std::vector<std::string> texts;
    EXPECT_TRUE(LiftTexts(sql, shape, texts)) << sql;
    EXPECT_EQ(texts, wanted) << sql;
  }
  std::string shape;
  std::vector<std::string> texts;
  for (const char* open : {"a='x", "a=\"x''", "[a", "#1/2/2003", "a='\x01\x31\x01'"})
    EXPECT_FALSE(LiftTexts(open, shape, texts)) << open;
}

}  // namespace
}  // namespace varnlog::dao
