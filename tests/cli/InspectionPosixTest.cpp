#include <algorithm>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/Paths.h"
#include "tests/cli/Installation.h"
#include "tests/support/TestFolder.h"

namespace varnlog::cli {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

class InspectionTest : public testing::Test {
 protected:
  void SetUp() override {
    std::vector<tools::Exposure> exposures;
    for (const char* name : {"Abel", "O'Hara", "<b>Cäsar", "=cmd|x"}) {
      exposures.push_back(NewExposure(name, "XI", "01.03.2024", "08:00:00"));
      exposures.push_back(NewExposure(name, "XP", "02.03.2024", "08:00:00"));
      exposures.back().volt.clear();
    }
    exposures.push_back(NewExposure("Vorher", "XI", "01.03.2023", "08:00:00"));
    installation_.Reports(exposures);
    ASSERT_EQ(installation_.Ctl("update").status, 0);
    installation_.WithLog(false, [](dao::Database& log) {
      const auto rows = log.OpenRecordset("SELECT TXray.* From TXray ORDER BY TXray.tXrayCulIntIDPk;");
      rows->Edit();
      rows->Fields("tXraySComment").SetText("Vertraulich");
      rows->Fields("tXraySDiagRetry").SetText("Wdh.");
      rows->Update();
    });
    fs::create_directory(Parent());
  }
  [[nodiscard]] fs::path Parent() const { return installation_.suite() / "Begehung hier"; }
  [[nodiscard]] Ended Makes(const std::string& options = "") const {
    return installation_.Ctl("inspection --from 2024-01-01 --to 2024-12-31 --output '" + Parent().string() +
                             "' " + options);
  }
  [[nodiscard]] std::set<std::string> Entries(const fs::path& folder) const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename().string());
    return names;
  }
  [[nodiscard]] fs::path Folder() const { return Parent() / "Begehung 2024-01-01 bis 2024-12-31"; }
  [[nodiscard]] std::string Read(const char* name) const { return test::ReadFile(Folder() / name); }

  Installation installation_{"inspection"};
};

TEST_F(InspectionTest, HoldsEverythingThatAnInspectorAsksFor) {
  const Ended run = Makes("--patients 2");
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(
      Entries(Folder()),
      (std::set<std::string>{"SHA256SUMS", "exposures.xlsx", "gaps.csv", "incomplete.csv", "index.html",
                             "repeats.csv", "report.pdf", "sample.csv", "statistics.csv", "statistics.pdf"}));
  const Ended sums =
      installation_.Shell("cd '" + Folder().string() + "' && sha256sum --strict -c SHA256SUMS");
  EXPECT_EQ(sums.status, 0) << sums.out << sums.err;
  const Ended unpacked = installation_.Shell(
      "cd '" + Parent().string() + "' && python3 -m zipfile -e *.zip unpacked && diff -r unpacked/* '" +
      Folder().string() + "'");
  EXPECT_EQ(unpacked.status, 0) << unpacked.out << unpacked.err;
  const auto lines = [this](const char* name) {
    const std::string text = Read(name);
    return std::ranges::count(text, '\n') - 1;
  };
  EXPECT_EQ(lines("incomplete.csv"), 4) << "the panoramic ones";
  EXPECT_EQ(lines("repeats.csv"), 1);
  EXPECT_EQ(lines("sample.csv"), 4) << "two patients of each of two types";
  EXPECT_EQ(lines("gaps.csv"), 0);
  EXPECT_THAT(Read("incomplete.csv"), HasSubstr("'=cmd|x")) << "nothing that a spreadsheet would run";
  EXPECT_THAT(Read("index.html"), HasSubstr("<html lang=\"de\">"));
  for (const char* name : {"repeats.csv", "report.pdf"}) {
    const bool isPdf = std::string(name).ends_with("pdf");
    const std::string text =
        isPdf ? installation_.Shell("pdftotext '" + (Folder() / name).string() + "' -").out : Read(name);
    EXPECT_THAT(text, Not(HasSubstr("Vertraulich"))) << name << ": the authority gets no comments";
    EXPECT_THAT(text, Not(HasSubstr("Vorher"))) << name;
  }
  fs::remove_all(Parent());
  fs::create_directory(Parent());
  ASSERT_EQ(Makes("--with-comments").status, 0);
  EXPECT_THAT(Read("repeats.csv"), HasSubstr("Vertraulich"));
}

TEST_F(InspectionTest, SaysOfAPeriodWithoutExposuresThatThereAreNone) {
  const Ended run =
      installation_.Ctl("inspection --from 2020-01-01 --to 2020-12-31 --output '" + Parent().string() + "'");
  ASSERT_EQ(run.status, 0) << run.err;
  const fs::path folder = Parent() / "Begehung 2020-01-01 bis 2020-12-31";
  EXPECT_TRUE(fs::exists(folder / "report.pdf"));
  const std::string incomplete = test::ReadFile(folder / "incomplete.csv");
  EXPECT_EQ(std::ranges::count(incomplete, '\n'), 1) << "the headings alone: " << incomplete;
}

TEST_F(InspectionTest, NeverOverwritesAndLeavesNothingHalf) {
  for (const char* taken : {"Begehung 2024-01-01 bis 2024-12-31", "Begehung 2024-01-01 bis 2024-12-31.zip"}) {
    Installation::Write(Parent() / taken, "mine");
    const Ended run = Makes();
    EXPECT_EQ(run.status, 1) << run.out;
    EXPECT_EQ(Entries(Parent()), std::set<std::string>{taken});
    EXPECT_EQ(test::ReadFile(Parent() / taken), "mine");
    fs::remove(Parent() / taken);
  }
  fs::remove(Parent());
  EXPECT_EQ(Makes().status, 1) << "nowhere to make it";
}

}  // namespace
}  // namespace varnlog::cli
