#include <QComboBox>
#include <QLabel>

#include "tests/windows/MainWindow.h"

namespace varnlog::app::test {
namespace {

using SettingsDialog = MainWindow;

TEST_F(SettingsDialog, KeepsWhatWasChosenAndAppliesTheColours) {
  Starts();
  const auto kept = [this](const char* section, const char* key) {
    return start::modINIFile().ReadString(section, key, program_->Globals().IniFileGl);
  };
  const QColor before = program_->Grid().Delegate().Colors(ui::CellState::kLocked, {}).back;
  program_->InDialog("frmSettings", [](QDialog& dialog) {
    Child<QComboBox>(dialog, "cmbLanguage").setCurrentIndex(4);
    Child<QComboBox>(dialog, "cmbColors").setCurrentIndex(1);
    Child<QComboBox>(dialog, "cmbSeparator").setCurrentIndex(3);
    Child<QLineEdit>(dialog, "txtBackup").setText("/nowhere/at all");
    Child<QPushButton>(dialog, "cmdOK").click();
  });
  program_->Triggers(CommandId::mnuViewSettings);
  EXPECT_EQ(kept("App", "Language"), "F");
  EXPECT_EQ(kept("Export", "ListSeparator"), "tab");
  EXPECT_EQ(kept("Backup", "Folder"), "/nowhere/at all");
  EXPECT_NE(program_->Grid().Delegate().Colors(ui::CellState::kLocked, {}).back, before);
  program_->InDialog("frmSettings", [](QDialog& dialog) {
    EXPECT_EQ(Child<QComboBox>(dialog, "cmbColors").currentIndex(), 1);
    Child<QComboBox>(dialog, "cmbColors").setCurrentIndex(0);
    Child<QPushButton>(dialog, "cmdOK").click();
  });
  program_->Triggers(CommandId::mnuViewSettings);
  EXPECT_EQ(program_->Grid().Delegate().Colors(ui::CellState::kLocked, {}).back, before);
  // As good as a folder that may not be written to.
  const std::filesystem::path file = installation_.program() / "varnlog.ini";
  std::filesystem::remove(file);
  std::filesystem::create_directory(file);
  program_->InDialog("frmSettings", [](QDialog& dialog) {
    Child<QLineEdit>(dialog, "txtExport").setText("/nowhere");
    Child<QPushButton>(dialog, "cmdOK").click();
  });
  static_cast<void>(program_->TakeMessages());
  program_->Triggers(CommandId::mnuViewSettings);
  EXPECT_TRUE(program_->TakeMessages().join("").contains("varnlog.ini"));
  std::filesystem::remove(file);
}

}  // namespace
}  // namespace varnlog::app::test
