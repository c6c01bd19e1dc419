#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/Paper.h"
#include "platform/ShortDate.h"
#include "tests/support/Table.h"

namespace varnlog::platform {
namespace {

const DateTime kFirstOfMay = DateTime::FromIso("1960-05-01 07:08:09").value();

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

class SystemLocale : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
      const char* value = std::getenv(variable);
      saved_.emplace_back(variable, value == nullptr ? "" : value);
      unsetenv(variable);
    }
  }
  void TearDown() override {
    for (const auto& [variable, value] : saved_) setenv(variable.c_str(), value.c_str(), 1);
  }

 private:
  std::vector<std::pair<std::string, std::string>> saved_;
};

TEST_F(SystemLocale, GivesTheForm) {
  const Table<const char*, const char*> rows = {{"de_DE.UTF-8", "01.05.1960"},
                                                {"en_US.UTF-8", "5/1/1960"},
                                                {"en_GB", "01/05/1960"},
                                                {"nl_NL.UTF-8", "01-05-1960"},
                                                {"sv_SE@euro", "1960-05-01"},
                                                {"fr_CH.UTF-8", "01.05.1960"},
                                                {"ru_RU.UTF-8", "01.05.1960"},
                                                {"th_TH.UTF-8", "1/5/1960"},
                                                {"C", "01.05.1960"},
                                                {"C.UTF-8", "01.05.1960"},
                                                {"POSIX", "01.05.1960"},
                                                {"xx_YY.UTF-8", "01.05.1960"},
                                                {"", "01.05.1960"},
                                                {"%%%/../..", "01.05.1960"}};
  for (const auto& [locale, expected] : rows) {
    setenv("LANG", locale, 1);
    EXPECT_EQ(ShortDate::FromSystem().Format(kFirstOfMay), expected) << locale;
  }
}

TEST_F(SystemLocale, PrefersTheMoreParticularVariable) {
  setenv("LANG", "de_DE.UTF-8", 1);
  setenv("LC_TIME", "en_US.UTF-8", 1);
  EXPECT_EQ(ShortDate::FromSystem().Format(kFirstOfMay), "5/1/1960");
  setenv("LC_ALL", "sv_SE.UTF-8", 1);
  EXPECT_EQ(ShortDate::FromSystem().Format(kFirstOfMay), "1960-05-01");
}

}  // namespace
}  // namespace varnlog::platform
