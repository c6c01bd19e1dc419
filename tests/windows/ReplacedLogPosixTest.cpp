#include "tests/windows/MainWindow.h"

namespace varnlog::app::test {
namespace {

using enum CommandId;

class ReplacedLog : public MainWindow {
 protected:
  void SetUp() override {
    MainWindow::SetUp();
    Starts();
    (void)TakeMessages();
  }
};

TEST_F(ReplacedLog, IsOpenedAnew) {
  const std::filesystem::path restored = installation_.suite() / "Sicherung.mdb";
  std::filesystem::copy_file(installation_.log(), restored);
  Enters(0, kVoltageColumn, "63");
  std::filesystem::rename(restored, installation_.log());
  installation_.WithLog(
      false, [](dao::Database& log) { log.Execute("DELETE FROM TXray WHERE tXraySName = 'Abel'"); });
  Triggers(mnuViewLoad);
  Settle();
  ASSERT_EQ(TakeMessages().size(), 1);
  EXPECT_EQ(Patients(), Names({"O'Hara", "Zander"}));
  Enters(0, kVoltageColumn, "64");
  ASSERT_TRUE(Quits());
  EXPECT_EQ(Stored("tXraySVolt"), "64");
  EXPECT_EQ(Stored("tXrayBEdVolt"), "0");
}

}  // namespace
}  // namespace varnlog::app::test
