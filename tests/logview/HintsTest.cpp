#include <gmock/gmock.h>

#include "logview/Plausibility.h"
#include "logview/Suggestions.h"
#include "tests/logview/LogFixture.h"

namespace varnlog::logview {
namespace {

using testing::ElementsAre;

using HintsTest = LogFixture;

TEST_F(HintsTest, SuggestWhatWasEnteredMostOften) {
  for (const char* person : {"Berg", "Lang", "", "Lang", "Abel"}) TakesExposure({{"tXraySDr", person}});
  EXPECT_THAT(SuggestionsFor(*log_, "tXraySDr"), ElementsAre("Lang", "Abel", "Berg"));
}

TEST_F(HintsTest, WonderAtWhatIsNoNumberOrUnusualForTheType) {
  const auto why = [this](const char* type, const char* entry) {
    return WhyImplausible(*log_, type, "tXraySVolt", entry);
  };
  EXPECT_TRUE(why("XI", "abc")->isNoNumber);
  EXPECT_FALSE(why("XI", ""));
  EXPECT_FALSE(why("XI", "6000")) << "nothing to compare it with";
  for (int i = 0; i < 20; ++i)
    TakesExposure({{"tXraySType", "XI"}, {"tXraySVolt", i % 2 == 0 ? "60" : "70,5"}});
  TakesExposure({{"tXraySType", "XP"}, {"tXraySVolt", "6000"}});
  EXPECT_FALSE(why("XI", "60"));
  EXPECT_FALSE(why("XI", "65.5"));
  EXPECT_FALSE(why("XP", "1")) << "of that type there are too few";
  ASSERT_TRUE(why("XI", "600"));
  EXPECT_EQ(why("XI", "600")->least + "-" + why("XI", "600")->greatest, "60-70,5");
  EXPECT_TRUE(why("XI", "6"));
}

}  // namespace
}  // namespace varnlog::logview
