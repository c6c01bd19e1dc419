#include <gtest/gtest.h>

#include "logview/MeasuredValue.h"
#include "tests/support/Table.h"

namespace varnlog::logview {
namespace {

TEST(MeasuredValue, IsReadWhereThereIsNoDoubt) {
  const Table<const char*, double, int> numbers = {{"0", 0, 0},         {"120", 120, 0},
                                                   {"3.40", 3.4, 2},    {"12,5", 12.5, 1},
                                                   {"0,125", 0.125, 3}, {"1.250", 1.25, 3}};
  for (const auto& [text, value, decimals] : numbers) {
    const auto read = ReadMeasured(text);
    ASSERT_TRUE(read) << text;
    EXPECT_EQ(read->value, value);
    EXPECT_EQ(read->decimals, decimals);
  }
  for (const char* text : {"", "n/a", "3.4 mGy", "1,250", "007", "1.2.3", ".5", "5,", "-1", "+1", " 1", "1e3",
                           "1234567890123456"}) {
    EXPECT_FALSE(ReadMeasured(text)) << text;
  }
}

}  // namespace
}  // namespace varnlog::logview
