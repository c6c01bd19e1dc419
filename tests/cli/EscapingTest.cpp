#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/Installation.h"
#include "tests/support/Table.h"

namespace varnlog::cli {
namespace {

/// A log whose one comment holds what the formats have to protect.
class ListEscapingTest : public testing::Test {
 protected:
  std::string ListOf(const std::string& comment, const std::string& format) {
    Installation installation("escaping");
    installation.Reports({NewExposure("Müller", "XI", "01.03.2004", "08:00:01")});
    EXPECT_EQ(installation.Ctl("update").status, 0);
    installation.WithLog(false, [&comment](dao::Database& log) {
      const auto rows = log.OpenRecordset("SELECT TXray.* From TXray;");
      rows->Edit();
      rows->Fields("tXraySComment").SetText(comment);
      rows->Update();
    });
    return installation.Ctl("list --format " + format).out;
  }
};

TEST_F(ListEscapingTest, EachFormatProtectsItsReader) {
  for (const auto& [comment, format, ending] : Table<const char*, const char*, std::string>{
           {"a,\"b\"\nc", "csv", ",\"a,\"\"b\"\"\nc\"\r\n"},
           // No formulas in spreadsheets, no escape sequences in terminals, unless told.
           {"=1+1", "csv", ",'=1+1\r\n"},
           {"+49", "csv", ",'+49\r\n"},
           {"-2", "csv", ",'-2\r\n"},
           {"@SUM(A1)", "csv", ",'@SUM(A1)\r\n"},
           {"\tx", "csv", ",'\tx\r\n"},
           {"a=\x1b]0;b\xC2\x9B\xE2\x80\xAE.", "csv", ",a= ]0;b  .\r\n"},
           {"=\x1b[1m", "csv --raw", ",=\x1b[1m\r\n"},
           {"a\\\"\n\t\x01ü", "json", "\"tXraySComment\":\"a\\\\\\\"\\n\\t\\u0001ü\"}\n]\n"},
           {"a\x1b[31mb\r\nc", "table", "a [31mb  c\n"},
           {"a\x1b[31mb", "table --raw", "a\x1b[31mb\n"}})
    EXPECT_THAT(ListOf(comment, format), testing::EndsWith(ending)) << format;
}

}  // namespace
}  // namespace varnlog::cli
