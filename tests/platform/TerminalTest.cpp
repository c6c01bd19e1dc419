#include <gtest/gtest.h>

#include "platform/Terminal.h"
#include "tests/support/Table.h"

namespace varnlog::platform {
namespace {

TEST(Terminal, MeasuresTextsInColumns) {
  const Table<const char*, std::size_t> cases = {
      {"", 0},          {"Mueller", 7}, {"Müller", 6},   {"Mu\u0308ller", 6}, {"Щукина", 6},
      {"山田 太郎", 9}, {"ﾔﾏﾀﾞ", 4},    {"\u200Fאב", 2}, {"\xFFx", 2}};
  for (const auto& [text, width] : cases) EXPECT_EQ(DisplayWidth(text), width) << text;
}

}  // namespace
}  // namespace varnlog::platform
