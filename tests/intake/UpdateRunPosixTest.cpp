#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/intake/ExchangeRecords.h"
#include "tests/intake/Practice.h"

namespace varnlog::intake {
namespace {

namespace fs = std::filesystem;

class UpdateRunOnPosixTest : public testing::Test {
 protected:
  test::TestFolder folder_;
  test::Practice practice_{folder_.Path()};
};

TEST_F(UpdateRunOnPosixTest, AtNoInstantMayOthersReadMoreThanTheLog) {
  practice_.Reports(test::Exposure{}.New());
  for (const auto& entry : fs::directory_iterator(folder_ / "")) {
    if (entry.is_regular_file()) fs::permissions(entry, fs::perms::owner_read | fs::perms::owner_write);
  }
  std::set<std::string> seen;
  RunOptions options = test::Practice::kHasty;
  options.onStep = [&](RunStep) {
    for (const auto& entry : fs::directory_iterator(folder_ / "")) {
      if (!entry.is_regular_file()) continue;
      seen.insert(entry.path().extension().string());
      const auto forOthers = entry.status().permissions() & (fs::perms::group_all | fs::perms::others_all);
      EXPECT_EQ(forOthers, fs::perms::none) << entry.path();
    }
  };
  EXPECT_EQ(practice_.Updates(options).added, 1);
  EXPECT_THAT(seen, testing::Contains(".intake"));
}

TEST_F(UpdateRunOnPosixTest, RefusesALinkInPlaceOfTheExchangeFile) {
  practice_.Reports(test::Exposure{}.New());
  fs::rename(practice_.exchange, folder_ / "elsewhere");
  fs::create_symlink("elsewhere", practice_.exchange);
  EXPECT_EQ(practice_.Updates().outcome, UpdateResult::Outcome::kFailed);
  EXPECT_THAT(practice_.view.Keys(), testing::ElementsAre("RU_ERR_LINK"));
  fs::remove(practice_.exchange);
  fs::rename(folder_ / "elsewhere", practice_.exchange);
  EXPECT_EQ(practice_.Updates().added, 1);
}

}  // namespace
}  // namespace varnlog::intake
