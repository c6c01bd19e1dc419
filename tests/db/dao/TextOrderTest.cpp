#include <algorithm>
#include <numeric>
#include <random>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "db/dao/rows/TextOrder.h"
#include "tests/db/dao/MemoryStorage.h"

namespace varnlog::dao {
namespace {

using ::testing::ElementsAre;
using Values = std::vector<std::optional<std::string_view>>;

/// Rows that the storage and a TextOrder can both sort.
class SortedTable : public ::testing::Test {
 protected:
  SortedTable() {
    storage_.Run(
        "CREATE TABLE T (id INTEGER PRIMARY KEY, a TEXT COLLATE JET, b TEXT COLLATE JET, d DATETIME)");
  }

  /// Calls take(id, values) for the rows of "SELECT id, ...".
  template <typename Take>
  void ForEach(const std::string& sql, Take take) {
    sqlite3_stmt* statement = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(storage_.Handle(), sql.c_str(), -1, &statement, nullptr), SQLITE_OK);
    while (sqlite3_step(statement) == SQLITE_ROW) {
      Values values;
      for (int i = 1; i < sqlite3_column_count(statement); ++i) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
        values.emplace_back(text == nullptr ? std::nullopt : std::optional<std::string_view>(text));
      }
      take(sqlite3_column_int64(statement, 0), values);
    }
    sqlite3_finalize(statement);
  }

  std::vector<std::int64_t> Ids(const std::string& sql) {
    std::vector<std::int64_t> ids;
    ForEach(sql, [&](std::int64_t id, const Values&) { ids.push_back(id); });
    return ids;
  }

  MemoryStorage storage_;
};

TEST_F(SortedTable, IsInTheOrderOfTheStorage) {
  std::mt19937 random(5);
  const char* const names[] = {"'Müller'", "'MÜLLER'", "'Muller'", "'Weiß'", "'weiss'",
                               "NULL",     "''",       "'Zoë'",    "'zoe'"};
  const char* const dates[] = {"'1961-03-12 00:00:00'", "'1880-01-01 00:00:00'", "NULL",
                               "'2001-01-01 00:00:00'"};
  storage_.Run("BEGIN");
  for (int row = 0; row < 3'000; ++row) {
    storage_.Run("INSERT OR IGNORE INTO T VALUES (" + std::to_string(random() % 100'000) + ", " +
                 names[random() % 9] + ", " + names[random() % 9] + ", " + dates[random() % 4] + ")");
  }
  const struct {
    const char* columns;
    const char* orderBy;
    std::vector<TextOrder::Term> terms;
  } cases[] = {
      {"a", "a", {{true, false}}},
      {"a", "a DESC", {{true, true}}},
      {"d, b", "d DESC, b", {{false, true}, {true, false}}},
      {"a, b, d", "a, b, d", {{true, false}, {true, false}, {false, false}}},
      {"a, b, d", "a DESC, b DESC, d DESC", {{true, true}, {true, true}, {false, true}}},
  };
  for (const auto& c : cases) {
    for (const char* scan : {" ORDER BY id", " ORDER BY d, id DESC"}) {
      TextOrder order(c.terms, 100);
      ForEach("SELECT id, " + std::string(c.columns) + " FROM T" + scan,
              [&](std::int64_t id, const Values& values) { ASSERT_TRUE(order.Add(id, values)); });
      const std::string id = c.terms.back().descending ? ", id DESC" : ", id";
      EXPECT_EQ(order.Finish(), Ids("SELECT id FROM T ORDER BY " + std::string(c.orderBy) + id))
          << c.orderBy << " scanned" << scan;
    }
  }
}

TEST(TextOrderTest, CopesWithFewRowsAndFewValues) {
  TextOrder none({TextOrder::Term{}});
  EXPECT_THAT(none.Finish(), ElementsAre());

  TextOrder allNull({TextOrder::Term{true, true}});
  for (const std::int64_t id : {7, 3, 5}) EXPECT_TRUE(allNull.Add(id, Values{std::nullopt}));
  EXPECT_THAT(allNull.Finish(), ElementsAre(7, 5, 3));
}

TEST(TextOrderTest, GivesUpBeforeTooManyDifferentValues) {
  TextOrder order({TextOrder::Term{}});
  std::size_t rows = 0;
  std::string value(200, 'x');
  bool goesOn = true;
  while (goesOn && rows < 1'000'000) {
    value.replace(0, 8, std::to_string(10'000'000 + rows));
    goesOn = order.Add(static_cast<std::int64_t>(++rows), Values{value});
  }
  EXPECT_FALSE(goesOn);
  EXPECT_LT(rows, 200'000U);
}

TEST(ValueDictionaryTest, KeepsValuesApartByTheirBytes) {
  ValueDictionary values;
  const std::string zero("a\0", 2);
  EXPECT_EQ(values.Intern("a"), 0U);
  EXPECT_EQ(values.Intern(zero), 1U);
  EXPECT_EQ(values.Intern("A"), 2U);
  EXPECT_EQ(values.Intern(""), 3U);
  EXPECT_EQ(values.Intern("12345678"), 4U);
  EXPECT_EQ(values.Intern("123456789"), 5U);
  for (std::uint32_t i = 0; i < 5'000; ++i) ASSERT_EQ(values.Intern("value " + std::to_string(i)), i + 6);
  EXPECT_EQ(values.Intern(zero), 1U);
  EXPECT_EQ(values.Intern("value 4999"), 5'005U);
  EXPECT_EQ(values.At(1), zero);
  EXPECT_EQ(values.At(3), "");
  EXPECT_EQ(values.At(5'005), "value 4999");
  // "a" and "A" are one place, with the ignorable zero "a" as well; "" comes first.
  const auto ranks = RankValues(values, true);
  EXPECT_EQ(ranks[3], 0U);
  EXPECT_EQ(ranks[0], ranks[1]);
  EXPECT_EQ(ranks[0], ranks[2]);
  EXPECT_NE(RankValues(values, false)[0], RankValues(values, false)[2]);
}

}  // namespace
}  // namespace varnlog::dao
