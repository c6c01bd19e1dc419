#include <cstdlib>

#include <gtest/gtest.h>

#include "platform/Paper.h"

namespace varnlog::platform {
namespace {

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
