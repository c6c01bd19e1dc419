#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/Installation.h"

namespace varnlog::cli {
namespace {

using testing::HasSubstr;

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

TEST_F(ListEscapingTest, CsvQuotesWhatNeedsIt) {
  EXPECT_THAT(ListOf("a,\"b\"\nc", "csv"), testing::EndsWith(",\"a,\"\"b\"\"\nc\"\r\n"));
}

TEST_F(ListEscapingTest, CsvGivesSpreadsheetsNoFormulasUnlessTold) {
  for (const std::string comment : {"=1+1", "+49", "-2", "@SUM(A1)", "\tx"}) {
    EXPECT_THAT(ListOf(comment, "csv"), testing::EndsWith(",'" + comment + "\r\n"));
  }
  EXPECT_THAT(ListOf("a=\x1b]0;b\xC2\x9B\xE2\x80\xAE.", "csv"), testing::EndsWith(",a= ]0;b  .\r\n"));
  EXPECT_THAT(ListOf("=\x1b[1m", "csv --raw"), testing::EndsWith(",=\x1b[1m\r\n"));
}

TEST_F(ListEscapingTest, JsonEscapesQuotesAndControlCharacters) {
  EXPECT_THAT(ListOf("a\\\"\n\t\x01ü", "json"), HasSubstr("\"tXraySComment\":\"a\\\\\\\"\\n\\t\\u0001ü\"}"));
}

TEST_F(ListEscapingTest, ATableKeepsEscapeSequencesFromTheTerminal) {
  EXPECT_THAT(ListOf("a\x1b[31mb\r\nc", "table"), HasSubstr("a [31mb  c\n"));
  EXPECT_THAT(ListOf("a\x1b[31mb", "table --raw"), HasSubstr("a\x1b[31mb\n"));
}

}  // namespace
}  // namespace varnlog::cli
