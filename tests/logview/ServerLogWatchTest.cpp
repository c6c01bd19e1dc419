#include "logview/LogWatch.h"
#include "tests/logview/LogFixture.h"

namespace varnlog::logview {
namespace {

using ServerLogWatchTest = LogFixture;

TEST_F(ServerLogWatchTest, TellsOfValuesAndOfExposures) {
  TakesExposure({{"tXraySName", "Abel"}});
  LogWatch watch(log_);
  const auto news = [&watch] {
    for (int look = 0; look < 200; ++look) {
      if (const auto found = watch.Look(); found != LogWatch::News::kNone) return found;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return LogWatch::News::kNone;
  };
  EXPECT_EQ(watch.Look(), LogWatch::News::kNone);
  Damages("UPDATE TXray SET tXraySVolt = '60'");
  EXPECT_EQ(news(), LogWatch::News::kValues);
  Damages("INSERT INTO TXray (tXrayCulIntIDPk, tXraySName) VALUES (7, 'Neu')");
  EXPECT_EQ(news(), LogWatch::News::kExposures);
  EXPECT_EQ(watch.Look(), LogWatch::News::kNone);
}

}  // namespace
}  // namespace varnlog::logview
