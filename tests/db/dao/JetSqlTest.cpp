#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "db/dao/EngineError.h"
#include "db/dao/sqlite/FileDialect.h"
#include "tests/db/dao/MemoryStorage.h"
#include "tests/support/Table.h"

namespace varnlog::dao {
namespace {

using namespace std::string_view_literals;

using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// One small table, to run translated statements on.
class Storage : public MemoryStorage {
 public:
  Storage() {
    Run("CREATE TABLE TXray (tXrayCulIntIDPk INTEGER PRIMARY KEY, tXraySName TEXT COLLATE JET, "
        "tXraySFirstname TEXT COLLATE JET, tXrayDBirthday DATETIME, tXrayTs DATETIME, "
        "tXraySType TEXT COLLATE JET, tXrayBEdDr YESNO)");
    Run("INSERT INTO TXray VALUES "
        "(1, 'Müller', 'Hans', '1961-03-12 00:00:00', '2001-01-31 00:00:00', 'XI', 1), "
        "(2, 'MÜLLER', 'hans', '1961-03-12 00:00:00', '2001-01-31 23:59:59', 'XP', 0), "
        "(3, 'Mueller', 'Eva', '1970-02-28 00:00:00', '2001-02-01 00:00:00', 'xi', 0), "
        "(4, 'Weiß', NULL, '1880-01-01 00:00:00', '2000-12-31 12:00:00', NULL, NULL), "
        "(5, 'O''Neil', '', '1955-05-05 00:00:00', '2001-01-15 08:30:00', 'XI', 1)");
  }

  /// The numbers of the rows a condition of the engine's SQL selects.
  std::string IdsWhere(const std::string& condition) {
    const auto statement = ParseSelect("SELECT * FROM TXray WHERE " + condition);
    return Rows("SELECT tXrayCulIntIDPk FROM TXray WHERE " + statement.where + " ORDER BY 1");
  }
};

/// The parts of a text between its bars.
std::vector<std::string> Parts(std::string_view text) {
  std::vector<std::string> parts;
  for (std::size_t at = 0; at <= text.size(); at += parts.back().size() + 1)
    parts.emplace_back(text.substr(at, text.find('|', at) - at));
  return parts;
}

std::string Hex(std::string_view bytes) {
  std::string hex;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    hex += {"0123456789ABCDEF"[byte / 16], "0123456789ABCDEF"[byte % 16]};
  }
  return hex;
}

std::string Joined(const SelectStatement& statement) {
  std::string sql = statement.distinct ? "SELECT DISTINCT " : "SELECT ";
  if (statement.allFields) sql += "*";
  for (std::size_t i = 0; i < statement.columns.size(); ++i) {
    sql += (i == 0 ? "" : ", ") + statement.columns[i].storage + " AS " +
           QuoteIdentifier(statement.columns[i].name);
  }
  sql += " FROM " + QuoteIdentifier(statement.table);
  if (!statement.where.empty()) sql += " WHERE " + statement.where;
  for (std::size_t i = 0; i < statement.orderBy.size(); ++i) {
    sql += (i == 0 ? " ORDER BY " : ", ") + statement.orderBy[i].storage;
    if (statement.orderBy[i].descending) sql += " DESC";
  }
  return sql;
}

/// The number and text of the error that a statement gives; number 0 when it gives none.
struct Failure {
  int number = 0;
  std::string text;
};

Failure FailureOf(std::string_view sql) {
  try {
    static_cast<void>(ParseSelect(sql));
    return {};
  } catch (const EngineError& error) {
    return {static_cast<int>(error.number()), error.what()};
  }
}

const char* const kSyntaxError = "Syntax error (missing operator) in query expression ";

TEST(JetSqlTest, TakesTheStatementsOfTheProgramAsTheyStand) {
  const Table<const char*, const char*> cases = {
      {"SELECT TXray.* From TXray WHERE (((TXray.tXrayTs) Between #1/1/2001# AND #12/31/2001 11:59:59 PM#) "
       "AND TXray.tXraySType = 'XI') ORDER BY TXray.tXrayTs DESC;",
       R"(SELECT * FROM "TXray" WHERE "tXrayTs" BETWEEN '2001-01-01 00:00:00' AND '2001-12-31 23:59:59' )"
       R"(AND "tXraySType" = 'XI' ORDER BY "tXrayTs" DESC)"},
      {"SELECT TXray.* From TXray WHERE (((TXray.tXrayTs) Between #1/1/2001# And #1/2/2001 11:59:59 PM# "
       "AND ((TXray.tXraySName)='Müller') AND ((TXray.tXraySFirstname)='Hans') AND "
       "((TXray.tXrayDBirthday)=#3/12/1961#))) ORDER BY TXray.tXrayTs DESC;",
       R"(SELECT * FROM "TXray" WHERE "tXrayTs" BETWEEN '2001-01-01 00:00:00' AND '2001-01-02 23:59:59' )"
       R"(AND "tXraySName" = 'Müller' AND "tXraySFirstname" = 'Hans' )"
       R"(AND "tXrayDBirthday" = '1961-03-12 00:00:00' ORDER BY "tXrayTs" DESC)"},
      {"SELECT DISTINCT TXray.tXraySName, TXray.tXraySFirstname, TXray.tXrayDBirthday, "
       "[tXraySName] & \", \" & [tXraySFirstname] AS FullName FROM TXray "
       "WHERE ((([tXraySName] & \", \" & [tXraySFirstname]) Like 'Mü*'));",
       R"(SELECT DISTINCT "tXraySName" AS "tXraySName", "tXraySFirstname" AS "tXraySFirstname", )"
       R"("tXrayDBirthday" AS "tXrayDBirthday", )"
       R"(jet_concat("tXraySName", ', ', "tXraySFirstname") COLLATE JET AS "FullName" FROM "TXray" )"
       R"(WHERE jet_like('Mü*', jet_concat("tXraySName", ', ', "tXraySFirstname")))"}};
  for (const auto& [jet, storage] : cases) EXPECT_EQ(Joined(ParseSelect(jet)), storage) << jet;
}

TEST(JetSqlTest, TellsWhatTheColumnsAndOrderTermsAre) {
  const auto statement = ParseSelect(
      "select distinct [tXraySName], txray.TXRAYTS as Taken, 1+1, 'a' & tXraySType from txray "
      "where tXraySNAME <> '' order by Taken desc, 4 asc, tXraySFirstname & '', tXraySName");
  ASSERT_EQ(statement.columns.size(), 4U);
  EXPECT_EQ(statement.columns[0].name, "tXraySName");
  EXPECT_TRUE(statement.columns[0].isField);
  EXPECT_EQ(statement.columns[1].name, "Taken");
  EXPECT_EQ(statement.columns[1].field, "TXRAYTS");
  EXPECT_EQ(statement.columns[2].name, "Expr1002");
  EXPECT_FALSE(statement.columns[2].isField);
  EXPECT_EQ(statement.columns[3].storage, R"(jet_concat('a', "tXraySType") COLLATE JET)");
  ASSERT_EQ(statement.orderBy.size(), 4U);
  EXPECT_EQ(statement.orderBy[0].field, "TXRAYTS");
  EXPECT_TRUE(statement.orderBy[0].descending);
  EXPECT_EQ(statement.orderBy[1].storage, statement.columns[3].storage);
  EXPECT_EQ(statement.orderBy[2].storage, R"(jet_concat("tXraySFirstname", '') COLLATE JET)");
  EXPECT_EQ(statement.orderBy[3].field, "tXraySName");
  EXPECT_EQ(statement.table, "txray");
  EXPECT_THAT(statement.fields, ElementsAre("tXraySName", "TXRAYTS", "tXraySType", "tXraySFirstname"));
}

TEST(JetSqlTest, SelectsWhatTheConditionMeans) {
  Storage storage;
  const Table<const char*, const char*> cases = {
      {"tXraySName = 'mÜLLER'", "1 2"},
      {"tXraySName = 'Muller'", ""},
      {"'WEISS' = tXraySName", "4"},
      {"tXraySName = 'O''Neil'", "5"},
      {"tXraySName = \"O'Neil\"", "5"},
      {"tXraySName & '' = 'o''neil'", "5"},
      {"tXraySName & ', ' & tXraySFirstname = 'weiß, '", "4"},
      {"'a' = 'A' And 'a' <> 'ä'", "1 2 3 4 5"},
      {"'a' In ('A')", "1 2 3 4 5"},
      {"'xi' In (tXraySType, 'zz')", "1 3 5"},
      {"'m' Between 'A' And tXraySName", "1 2 3 4 5"},
      {"tXraySType In ('xi', 'XP')", "1 2 3 5"},
      {"tXraySType Not In ('xi')", "2"},
      {"tXraySName Not Between 'N' And 'Z'", "1 2 3"},
      {"tXraySType Is Null", "4"},
      {"tXraySType Is Not Null And Not tXrayBEdDr", "2 3"},
      {"tXrayBEdDr = True Or tXrayBEdDr = No", "1 2 3 5"},
      {"tXraySName Like '*NEI?'", "5"},
      {"tXraySName Not Like 'm*' And tXraySType Like 'X[A-J]'", "5"},
      {"tXraySFirstname Like '*'", "1 2 3 5"},
      {"tXrayTs = #1/31/2001#", "1"},
      {"tXrayTs = #1/31/2001 11:59:59 PM#", "2"},
      {"tXrayTs = #12/31/2000 12:00:00 pm#", "4"},
      {"tXrayTs > #1/31/2001 12:00:00 AM# And tXrayTs <= #02/01/2001 0:00:00#", "2 3"},
      {"Not (tXrayCulIntIDPk = 1 Or tXrayCulIntIDPk = 2) And tXrayCulIntIDPk < 5", "3 4"},
      {"tXrayCulIntIDPk = 1 Or tXrayCulIntIDPk = 2 And tXraySType = 'XI'", "1"},
      {"(tXrayCulIntIDPk + 1) * 2 - -1 = 5", "1"},
      {"tXrayCulIntIDPk = 10 / 4 + 0.5 Or - - tXrayCulIntIDPk = - (0 - 2)", "2 3"},
      {"(tXrayCulIntIDPk = 1) = (tXraySFirstname Not Like 'h*')", "2"}};
  for (const auto& [condition, ids] : cases) EXPECT_EQ(storage.IdsWhere(condition), ids) << condition;
}

TEST(JetSqlTest, RefusesEverythingElseAndNamesThePlace) {
  const Table<const char*, const char*> cases = {
      {"", "(SELECT expected)"},
      {"TXray", "'TXray', character 1."},
      {"SELECT * FROM TXray WHERE tXraySName='O'Brien'", "='O'Brien'', character 41."},
      {"SELECT * FROM TXray WHERE tXraySName='O'", ""},
      {"SELECT * FROM TXray WHERE tXraySName='''", "Syntax error in string"},
      {"SELECT * FROM TXray WHERE (tXraySName='a'", "character 42."},
      {"SELECT * FROM TXray WHERE tXraySName='a')", "character 41."},
      {"SELECT * FROM TXray; DELETE FROM TXray", "'SELECT * FROM TXray; DELETE FROM TXray', character 22."},
      {"SELECT * FROM TXray;;", "character 21."},
      {"SELECT * FROM TXray -- all", ""},
      {"DELETE FROM TXray", "(SELECT expected)"},
      {"SELECT * FROM TXray UNION SELECT * FROM TConfig", "character 21."},
      {"SELECT * FROM TXray, TConfig", "character 20."},
      {"SELECT * FROM TXray WHERE tXrayCulIntIDPk IN (SELECT 1)", "character 47."},
      {"SELECT load_extension('x') FROM TXray", "character 22."},
      {"SELECT *, tXraySName FROM TXray", "character 9."},
      {"SELECT FROM TXray", "character 8."},
      {"SELECT * FROM", "FROM clause"},
      {"SELECT * FROM TXray WHERE", "character 26."},
      {"SELECT * FROM TXray ORDER BY", "character 29."},
      {"SELECT * FROM TXray ORDER BY True", "Order by a constant"},
      {"SELECT * FROM TXray ORDER BY 1", "Invalid column position"},
      {"SELECT a FROM TXray ORDER BY 2", "Invalid column position"},
      {"SELECT * FROM TXray WHERE a = b = c", "character 33."},
      {"SELECT * FROM TXray WHERE a = 'x' + 1", "Data type mismatch"},
      {"SELECT * FROM TXray WHERE a Not b", "character 33."},
      {"SELECT * FROM TXray WHERE a Between 1 Or 2", "(AND expected)"},
      {"SELECT * FROM TXray WHERE [a = 1", "bracketing"},
      {"SELECT * FROM TXray WHERE [] = 1", "bracketing"},
      {"SELECT * FROM TXray WHERE a = 12x", "Syntax error in number"},
      {"SELECT * FROM TXray WHERE a ! b", "unknown character"},
      {"SELECT * FROM TXray WHERE Müller \xFC = 1", "Invalid name"},
      {"SELECT * FROM TXray WHERE Ärger Ärger = 1", "character 33."},
      {"SELECT * FROM TXray WHERE a = #1/31/2001", "Syntax error in date"}};
  for (const auto& [sql, place] : cases) {
    const Failure failure = FailureOf(sql);
    const bool valid = std::string_view(sql).ends_with("'O'");
    EXPECT_EQ(failure.number, valid ? 0 : 3075) << sql;
    EXPECT_THAT(failure.text, HasSubstr(place)) << sql;
  }
  EXPECT_EQ(FailureOf("SELECT * FROM TXray WHERE a='O'Brien'").text,
            std::string(kSyntaxError) + "'...* FROM TXray WHERE a='O'Brien'', character 32.");
}

TEST(JetSqlTest, RefusesDatesThatDoNotExist) {
  for (const std::string& date :
       Parts("2/30/2001|13/1/2001|2/29/1900|0/1/2001|1/0/2001|1/1/99|1/1/0099|1/1/20011|1-1-2001|1/1||x|"
             "1/1/2001 24:00:00|1/1/2001 13:00:00 PM|1/1/2001 0:00:00 AM|1/1/2001 1:60:00|1/1/2001 1:00|"
             "1/1/2001 1:00:00 XM|1/1/2001 1:00:00 PM x|2001-01-31|1/1/2001T1:00:00")) {
    const Failure failure = FailureOf("SELECT * FROM T WHERE a = #" + date + "#");
    EXPECT_EQ(failure.number, 3075) << date;
    EXPECT_THAT(failure.text, HasSubstr("Syntax error in date")) << date;
  }
}

TEST(JetSqlTest, FieldsBelongToTheTableOfTheStatement) {
  EXPECT_EQ(
      FailureOf("SELECT TXRay.tXrayTs FROM TXray WHERE [txray].[tXrayTs] Is Null ORDER BY TXRAY.tXrayTs")
          .number,
      0);
  for (const char* sql : {"SELECT TConfig.* FROM TXray", "SELECT a FROM TXray WHERE TConfig.a = 1",
                          "SELECT a FROM TXray ORDER BY TConfig.a", "SELECT TXra.a FROM TXray"}) {
    EXPECT_EQ(FailureOf(sql).number, 3061) << sql;
  }
}

TEST(JetSqlTest, ShortensLongStatementsAndHidesBrokenBytesInItsTexts) {
  const Failure longOne = FailureOf("SELECT * FROM TXray WHERE a='" + std::string(500, 'x') + "'y'" +
                                    std::string(500, 'z') + "'");
  EXPECT_EQ(longOne.number, 3075);
  EXPECT_LT(longOne.text.size(), 160U);
  EXPECT_THAT(longOne.text, HasSubstr("'...xxxx"));
  EXPECT_THAT(FailureOf(std::string_view("SELECT * FROM T WHERE \x01 \0 'a", 28)).text,
              HasSubstr("SELECT * FROM T WHERE     'a"));
  EXPECT_THAT(FailureOf("SELECT * FROM T WHERE a='\xFC' 'b'").text, HasSubstr("a='?' 'b'"));
  EXPECT_EQ(FailureOf(std::string(100'000, ' ')).number, 3075);
}

TEST(JetSqlTest, KeepsAnyBytesOfATextAsTheyAre) {
  Storage storage;
  const std::string zero("a\0b", 3);
  for (const std::string& text : {std::string("%_\\"), std::string("';--"), std::string("\xFF\xFE"), zero}) {
    std::string quoted;
    for (const char c : text) quoted += c == '\'' ? "''" : std::string(1, c);
    const auto statement = ParseSelect("SELECT '" + quoted + "' AS a FROM TXray");
    EXPECT_EQ(storage.Rows("SELECT hex(" + statement.columns[0].storage + ")"), Hex(text));
  }
}

TEST(JetSqlTest, RefusesWhatTheStorageCouldNotHold) {
  const auto repeated = [](const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
  };
  const std::string select = "SELECT * FROM T WHERE ";
  EXPECT_EQ(FailureOf(select + repeated("(", 12) + "a" + repeated(")", 12) + "=1").number, 0);
  EXPECT_EQ(FailureOf(select + repeated("(", 100'000)).number, 3075);
  EXPECT_EQ(FailureOf(select + repeated("(", 40) + "a" + repeated(")", 40) + "=1").number, 3075);
  EXPECT_EQ(FailureOf(select + repeated("Not ", 20'000) + "a").number, 3075);
  EXPECT_EQ(FailureOf(select + repeated("- ", 20'000) + "a").number, 3075);
  EXPECT_EQ(FailureOf(select + "a=1" + repeated(" And a=1", 1'000)).number, 3075);
  EXPECT_EQ(FailureOf(select + "a" + repeated(" & a", 120) + "='x'").number, 3075);
}

/// Every statement the parser lets through must be one the storage can take, apart from names it does not
/// have; and the parser itself must answer everything with a result or an EngineError.
TEST(JetSqlTest, MutatedStatementsNeverGetPastTheParserBroken) {
  const std::vector<std::string> seeds = {
      "SELECT DISTINCT TXray.tXraySName, [tXraySName] & \", \" & [tXraySFirstname] AS FullName FROM TXray "
      "WHERE "
      "((([tXraySName] & \", \" & [tXraySFirstname]) Like 'Mü*'));",
      "SELECT TXray.* From TXray WHERE (((TXray.tXrayTs) Between #1/31/2001# And #1/31/2001 11:59:59 PM#)) "
      "ORDER BY TXray.tXrayTs DESC;",
      "SELECT tXrayTs, 1 + 2 * -3 / 4 AS n FROM TXray WHERE Not (tXrayBEdDr = True Or tXraySType In ('XI', "
      "'O''x')) And tXraySName Is Not Null ORDER BY 1 DESC, n, tXraySName & 'x' ASC"};
  const std::vector<std::string> pieces = Parts(
      "(|)|'|\"|#|[|]|,|;|.|*|-|--|/*|&|=|<>| And | Or | Not | Like | Between | In (| Is Null|True|Null|0|1|"
      "9999999999999999999999|'x'|#2/28/2001#|tXraySName| ORDER BY | DISTINCT | AS |\xFF|ß|\0"sv);
  Storage storage;
  std::mt19937 random(20010131);
  const auto below = [&random](std::size_t n) {
    return std::uniform_int_distribution<std::size_t>(0, n - 1)(random);
  };
  int accepted = 0;
  for (int round = 0; round < 30'000; ++round) {
    std::string sql = seeds[below(seeds.size())];
    for (std::size_t change = below(4) + 1; change > 0; --change) {
      const std::size_t at = below(sql.size());
      const std::size_t length = std::min(below(12), sql.size() - at);
      switch (below(4)) {
        case 0:
          sql.erase(at, length);
          break;
        case 1:
          sql.insert(at, sql.substr(below(sql.size()), below(30)));
          break;
        case 2:
          sql.replace(at, 1, 1, static_cast<char>(below(256)));
          break;
        default:
          sql.insert(at, pieces[below(pieces.size())]);
      }
      if (sql.empty()) sql = " ";
    }
    try {
      const std::string storageSql = Joined(ParseSelect(sql));
      ++accepted;
      const std::string complaint = storage.Complaint(storageSql);
      const bool unknownName =
          complaint.starts_with("no such column") || complaint.starts_with("no such table");
      ASSERT_TRUE(complaint.empty() || unknownName) << complaint << "\n" << storageSql << "\n" << sql;
      ASSERT_EQ(storageSql.find('\0'), std::string::npos) << sql;
    } catch (const EngineError& error) {
      const bool expected =
          error.number() == ErrorNumber::kSyntaxError || error.number() == ErrorNumber::kTooFewParameters;
      ASSERT_TRUE(expected) << error.what() << "\n" << sql;
    }
  }
  EXPECT_GT(accepted, 300);  // otherwise the mutations test the lexer only
}

}  // namespace
}  // namespace varnlog::dao
