#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/Paths.h"
#include "tests/cli/Installation.h"
#include "tests/support/TestFolder.h"

namespace varnlog::cli {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class ExportCommandTest : public testing::Test {
 protected:
  /// A log with an exposure for each of these comments and doses.
  void Logs(const std::vector<std::pair<std::string, std::string>>& commentsAndDoses) {
    std::vector<tools::Exposure> exposures;
    for (std::size_t i = 0; i < commentsAndDoses.size(); ++i) {
      exposures.push_back(NewExposure("Müller", "XI", "01.03.2004", "08:00:0" + std::to_string(i % 10)));
      exposures.back().dose = commentsAndDoses[i].second;
    }
    installation_.Reports(exposures);
    ASSERT_EQ(installation_.Ctl("update").status, 0);
    installation_.WithLog(false, [&](dao::Database& log) {
      const auto rows = log.OpenRecordset("SELECT TXray.* From TXray ORDER BY TXray.tXrayCulIntIDPk;");
      for (const auto& row : commentsAndDoses) {
        rows->Edit();
        rows->Fields("tXraySComment").SetText(row.first);
        rows->Update();
        rows->MoveNext();
      }
    });
  }
  [[nodiscard]] fs::path File(const std::string& ending) const {
    return installation_.suite() / ("Übergabe" + ending);
  }
  [[nodiscard]] Ended Exports(const std::string& ending, const std::string& options = "") const {
    return installation_.Ctl("export --output '" + File(ending).string() + "' " + options);
  }
  /// The export read by other programs and compared with what the list shows.
  [[nodiscard]] Ended Compared(const std::string& ending) const {
    const fs::path listed = installation_.suite() / "list.json";
    Installation::Write(listed, installation_.Ctl("list --display --format json").out);
    return installation_.Shell("PATH=/usr/bin:$PATH python3 " VARNLOG_SOURCE_DIR
                               "/tests/cli/compare_export.py '" +
                               listed.string() + "' '" + File(ending).string() + "'");
  }
  [[nodiscard]] std::size_t FilesInSuite() const {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(installation_.suite()), fs::directory_iterator()));
  }

  Installation installation_{"export"};
};

TEST_F(ExportCommandTest, ReadsBackAsTheListShowsItInEveryFormat) {
  Logs({{"=cmd|' /C calc'!A0", "12.50"},
        {"@SUM(A1)", "12,5"},
        {"+49 30; \"x\"", "1,250"},
        {"a\nb\tc", "n/a"},
        {"<b>&amp;</b>", "3.4 mGy"},
        {"-1", "007"},
        {"", ""}});
  for (const std::string ending : {".xlsx", ".csv", ".JSON", ".json"}) {
    const Ended run = Exports(ending);
    EXPECT_EQ(run.status, 0) << run.err;
    if (ending == ".JSON") continue;
    const Ended compared = Compared(ending);
    EXPECT_EQ(compared.status, 0) << ending << compared.err;
    EXPECT_THAT(compared.out, HasSubstr("7 rows"));
    // The newest row comes first: numbers, a date, texts, and nothing.
    if (ending != ".xlsx") continue;
    EXPECT_THAT(compared.out, HasSubstr("ndssssnnnnnsn A2 A1:M8"));
  }
  EXPECT_THAT(test::ReadFile(File(".csv")), testing::StartsWith("\xEF\xBB\xBFNr.;"));
}

TEST_F(ExportCommandTest, NeitherOverwritesUnaskedNorLeavesHalfAFile) {
  Logs(std::vector<std::pair<std::string, std::string>>(10, {std::string(200, 'x'), "1"}));
  Installation::Write(File(".xlsx"), "mine");
  const std::size_t files = FilesInSuite();
  const Ended taken = Exports(".xlsx");
  EXPECT_EQ(taken.status, 1);
  EXPECT_THAT(taken.err, HasSubstr("--overwrite"));
  EXPECT_EQ(Exports(".txt").status, 2);
  for (const std::string ending : {".xlsx", ".csv", ".json"}) {
    const Ended full = installation_.Shell("trap '' XFSZ; ulimit -f 1; " + installation_.CtlCommand() +
                                           " export --overwrite --output '" + File(ending).string() + "'");
    EXPECT_EQ(full.status, 1) << ending;
    EXPECT_THAT(full.err, HasSubstr(File(ending).string()));
  }
  EXPECT_EQ(FilesInSuite(), files);
  EXPECT_EQ(test::ReadFile(File(".xlsx")), "mine");
  EXPECT_EQ(Exports(".xlsx", "--overwrite").status, 0);
  EXPECT_EQ(Compared(".xlsx").status, 0);
}

}  // namespace
}  // namespace varnlog::cli
