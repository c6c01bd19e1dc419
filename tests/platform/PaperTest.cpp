#include <cstdlib>

#include <gtest/gtest.h>

#include "platform/Paper.h"

namespace varnlog::platform {
namespace {

TEST(PaperTest, FollowsTheCountry) {
  const std::pair<const char*, Paper> rows[] = {
      {"en_US", Paper::kLetter}, {"en_CA", Paper::kLetter}, {"es_MX", Paper::kLetter}, {"de_DE", Paper::kA4},
      {"en_GB", Paper::kA4},     {"ru_RU", Paper::kA4},     {"xx_YY", Paper::kA4},     {"", Paper::kA4},
  };
  for (const auto& [locale, paper] : rows) EXPECT_EQ(PaperOf(locale), paper) << locale;
}

TEST(PaperTest, TheUsersPaperDoesNotDependOnTheirDates) {
  setenv("LC_ALL", "", 1);
  setenv("LC_TIME", "en_US.UTF-8", 1);
  setenv("LC_PAPER", "de_DE.UTF-8", 1);
  EXPECT_EQ(SystemPaper(), Paper::kA4);
  setenv("LC_PAPER", "en_US.UTF-8", 1);
  EXPECT_EQ(SystemPaper(), Paper::kLetter);
  setenv("LC_ALL", "C", 1);
  EXPECT_EQ(SystemPaper(), Paper::kA4);
}

}  // namespace
}  // namespace varnlog::platform
