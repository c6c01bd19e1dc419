#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "db/dao/rows/TextOrder.h"

namespace varnlog::dao {
namespace {

using ::testing::ElementsAre;
using Values = std::vector<std::optional<std::string_view>>;

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
