#include <gtest/gtest.h>

#include "tests/intake/ExchangeRecords.h"
#include "tests/intake/Practice.h"
#include "tests/support/Child.h"

namespace varnlog::intake {
namespace {

using test::Exposure;
using test::Row;

std::string Exposures(int first, int count) {
  std::string records;
  for (int i = first; i < first + count; ++i)
    records += Exposure{.lastName = "Patient " + std::to_string(i)}.New();
  return records;
}

/// Runs an update in a process of its own that ends, without any clean-up, when it reaches `step`; records
/// arrive while it reads. True when it got there.
bool DiesAt(const std::filesystem::path& folder, RunStep step, const std::string& arriving) {
  varnlog::test::Child child([&] {
    test::Practice practice(folder);
    practice.view.onAdvance = [&](std::int64_t done) {
      if (done == 1) practice.Reports(arriving);
    };
    RunOptions options = test::Practice::kHasty;
    options.onStep = [step](RunStep reached) {
      if (reached == step) _exit(9);
    };
    return practice.Updates(options).outcome == UpdateResult::Outcome::kDone ? 0 : 1;
  });
  return child.Wait() == 9;
}

std::vector<RunStep> AllSteps() {
  std::vector<RunStep> steps;
  for (int i = 0; i < kRunStepCount; ++i) steps.push_back(static_cast<RunStep>(i));
  return steps;
}

class InterruptedRunTest : public testing::TestWithParam<RunStep> {
 protected:
  [[nodiscard]] bool IsCommitted() const { return GetParam() >= RunStep::kCommitted; }
  [[nodiscard]] static bool IsShift(RunStep step) {
    return step >= RunStep::kShiftPrepared && step <= RunStep::kShiftCut;
  }
  test::TestFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(EveryStep, InterruptedRunTest, testing::ValuesIn(AllSteps()),
                         [](const auto& step) { return std::to_string(static_cast<int>(step.param)); });

TEST_P(InterruptedRunTest, TakesInformationOnceAndInOrder) {
  // Information that came before its exposure was known belongs to nothing, also when it is read twice.
  const Exposure exposure{.responsible = "first"};
  const Exposure news{.responsible = "second"};
  const int arriving = IsShift(GetParam()) ? 1 : 0;
  test::AppendFile(folder_ / "varnlog.sdx", news.Information() + exposure.New());
  ASSERT_TRUE(DiesAt(folder_.Path(), GetParam(), Exposures(0, arriving)));
  test::Practice practice(folder_.Path());
  EXPECT_NE(practice.Updates().outcome, UpdateResult::Outcome::kFailed);
  ASSERT_EQ(practice.Log().size(), 1U + static_cast<unsigned>(arriving));
  EXPECT_EQ(practice.Log().front()["tXraySDr"], "first");
}

TEST_P(InterruptedRunTest, ADamagedCopyCostsNothingThatIsLeftElsewhere) {
  if (IsShift(GetParam())) return;  // the records that were read are nowhere but in the copy
  test::AppendFile(folder_ / "varnlog.sdx", Exposures(0, 3));
  ASSERT_TRUE(DiesAt(folder_.Path(), GetParam(), ""));
  const std::filesystem::path copy = folder_ / test::CopyName();
  const bool hasCopy = std::filesystem::exists(copy);
  if (hasCopy) std::filesystem::resize_file(copy, std::filesystem::file_size(copy) - 20);
  test::Practice practice(folder_.Path());
  EXPECT_TRUE(practice.ExchangePending() || IsCommitted());
  practice.Updates();
  EXPECT_EQ(practice.Differences(3), "");
  EXPECT_EQ(folder_.Count(".intake.damaged"), hasCopy && !IsCommitted() ? 1 : 0);
  practice.Updates();
  EXPECT_EQ(folder_.Count(".taken"), 0);
  for (const auto& entry : std::filesystem::directory_iterator(folder_.Path())) {
    EXPECT_EQ(entry.path().string().find(".new-"), std::string::npos) << entry.path();
  }
}

TEST_P(InterruptedRunTest, ADamagedShiftJournalMisalignsNothing) {
  if (!IsShift(GetParam())) return;
  test::AppendFile(folder_ / "varnlog.sdx", Exposures(0, 3));
  const Exposure longer{.lastName = "Patient 3", .firstName = "Anna Katharina"};
  ASSERT_TRUE(DiesAt(folder_.Path(), GetParam(), longer.New()));
  const std::filesystem::path journal = folder_ / "varnlog.sdx.shift";
  std::filesystem::resize_file(journal, std::filesystem::file_size(journal) - 20);
  test::Practice practice(folder_.Path());
  for (int run = 0; run < 2; ++run) EXPECT_NE(practice.Updates().outcome, UpdateResult::Outcome::kFailed);
  EXPECT_EQ(practice.Differences(4), "");
  const bool isMisaligned = GetParam() == RunStep::kShiftHalf || GetParam() == RunStep::kShiftWritten;
  EXPECT_EQ(folder_.Count(".damaged"), isMisaligned ? 0 : 1);
}

// Half a record is written when the run comes, the other half into the file that was moved aside.
TEST(AppenderTest, WhoKeepsTheFileOpenLosesNothing) {
  test::TestFolder folder;
  test::Practice practice(folder.Path());
  RunOptions options = test::Practice::kHasty;
  options.patience = std::chrono::milliseconds(10);
  {
    std::ofstream held(practice.exchange, std::ios::binary | std::ios::app);
    const std::string record = Exposures(1, 1);
    held << Exposures(0, 1) << record.substr(0, 40) << std::flush;
    practice.Updates(options);
    held << record.substr(40) << std::flush;
    EXPECT_TRUE(practice.ExchangePending());
    test::AppendFile(practice.exchange, Exposures(2, 1));
  }
  for (int run = 0; run < 2; ++run) practice.Updates(options);
  EXPECT_EQ(practice.Differences(3), "");
  EXPECT_EQ(folder.Count(""), 1);
}

}  // namespace
}  // namespace varnlog::intake
