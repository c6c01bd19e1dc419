#include "logview/LogWatch.h"
#include "tests/logview/LogFixture.h"

namespace varnlog::logview {
namespace {

class ServerLogWatchTest : public LogFixture {
 protected:
  /// What comes within a time in which a server is asked at most once, but announces at once.
  static LogWatch::News Soon(LogWatch& watch, int milliseconds = 1'500) {
    for (int waited = 0; waited < milliseconds; waited += 10) {
      if (const auto found = watch.Look(); found != LogWatch::News::kNone) return found;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return LogWatch::News::kNone;
  }
};

TEST_F(ServerLogWatchTest, TellsOfValuesAndOfExposures) {
  TakesExposure({{"tXraySName", "Abel"}});
  LogWatch watch(log_);
  EXPECT_EQ(watch.Look(), LogWatch::News::kNone);
  Damages("UPDATE TXray SET tXraySVolt = '60'");
  EXPECT_EQ(Soon(watch), LogWatch::News::kValues);
  Damages("INSERT INTO TXray (tXrayCulIntIDPk, tXraySName) VALUES (7, 'Neu')");
  EXPECT_EQ(Soon(watch), LogWatch::News::kExposures);
  EXPECT_EQ(watch.Look(), LogWatch::News::kNone);
}

TEST_F(ServerLogWatchTest, TellsOfThemOnAServerThatFollowsAnotherToo) {
  TakesExposure({{"tXraySName", "Abel"}});
  const auto& first = test::PrivateServer::Instance();
  const test::PrivateServer second(first);
  std::string link = test::ReadFile(log_->Name());
  link.replace(link.find(first.Folder()), first.Folder().size(), second.Folder());
  std::ofstream(folder_ / "second.mdb") << link;
  LogWatch watch(Open(Path("second.mdb")));
  EXPECT_EQ(watch.Look(), LogWatch::News::kNone);
  Damages("UPDATE TXray SET tXraySVolt = '60'");
  EXPECT_EQ(Soon(watch, 5'000), LogWatch::News::kValues);
  second.Promote();
  std::this_thread::sleep_for(std::chrono::milliseconds(2'100));
  EXPECT_EQ(watch.Look(), LogWatch::News::kNone);
  for (const char* volt : {"61", "62"}) {
    test::PrivateServer::Damage(Path("second.mdb"),
                                "UPDATE TXray SET tXraySVolt = '" + std::string(volt) + "'");
    EXPECT_EQ(Soon(watch), LogWatch::News::kValues) << volt;
  }
}

}  // namespace
}  // namespace varnlog::logview
