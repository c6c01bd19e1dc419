#include <gtest/gtest.h>

#include "platform/Terminal.h"

namespace varnlog::platform {
namespace {

TEST(Terminal, MeasuresTextsInColumns) {
  const struct {
    const char* text;
    std::size_t width;
  } cases[] = {
      {"", 0},          {"Mueller", 7}, {"Müller", 6},   {"Mu\u0308ller", 6}, {"Щукина", 6},
      {"山田 太郎", 9}, {"ﾔﾏﾀﾞ", 4},    {"\u200Fאב", 2}, {"\xFFx", 2},
  };
  for (const auto& row : cases) EXPECT_EQ(DisplayWidth(row.text), row.width) << row.text;
}

}  // namespace
}  // namespace varnlog::platform
