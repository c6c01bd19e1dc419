#pragma once

#include <QLineEdit>
#include <QPushButton>

#include "logview/Columns.h"
#include "tests/windows/RunningProgram.h"

namespace varnlog::app::test {

using Names = std::vector<std::string>;

inline constexpr int kVoltageColumn = 7;

/// A practice whose suite has reported four exposures of three patients on four days; the voltage is left to
/// be entered.
class MainWindow : public testing::Test {
 protected:
  void SetUp() override {
    std::vector<tools::Exposure> exposures = {cli::NewExposure("Zander", "XI", "03.02.2020", "08:00:00"),
                                              cli::NewExposure("Abel", "XP", "04.02.2020", "09:00:00"),
                                              cli::NewExposure("O'Hara", "XI", "05.02.2020", "10:00:00"),
                                              cli::NewExposure("Abel", "XC", "06.03.2021", "11:00:00")};
    for (tools::Exposure& exposure : exposures) exposure.volt.clear();
    installation_.Reports(exposures);
  }

  void Starts(core::MessageAnswer answer = core::MessageAnswer::kYes) {
    program_.reset();
    program_ = std::make_unique<RunningProgram>(installation_, answer);
  }
  // The run's own, in fewer words.
  [[nodiscard]] frmMDIMain& Window() { return program_->Window(); }
  [[nodiscard]] ui::TDBGrid& Grid() { return program_->Grid(); }
  [[nodiscard]] core::Globals& Globals() { return program_->Globals(); }
  [[nodiscard]] QString Text(core::TextKey key) const { return program_->Text(key); }
  [[nodiscard]] QStringList ColumnTexts(int column) { return program_->ColumnTexts(column); }
  QStringList TakeMessages() { return program_->TakeMessages(); }
  void Triggers(CommandId command) { program_->Triggers(command); }
  void Enters(int row, int column, const QString& text) { program_->Enters(row, column, text); }
  void ClicksHeading(int column) { program_->ClicksHeading(column); }
  bool Quits() { return program_->Quits(); }
  void InDialog(const char* name, std::function<void(QDialog&)> user) {
    program_->InDialog(name, std::move(user));
  }
  static void Settle() { RunningProgram::Settle(); }

  /// The last day's exposure comes first.
  [[nodiscard]] std::string Stored(const std::string& field) const {
    std::string text;
    installation_.WithLog(false, [&](dao::Database& log) {
      const auto rows = log.OpenRecordset("SELECT TXray.* From TXray ORDER BY TXray.tXrayTs DESC;");
      text = rows->Fields(field).Text();
    });
    return text;
  }
  [[nodiscard]] std::vector<std::string> Patients() {
    std::vector<std::string> names;
    for (const QString& text : program_->ColumnTexts(logview::kPatientColumn)) {
      names.push_back(text.section(',', 0, 0).toStdString());
    }
    return names;
  }
  static void EntersPeriod(QDialog& dialog, const char* from, const char* to) {
    Child<QLineEdit>(dialog, "txtDate0").setText(from);
    Child<QLineEdit>(dialog, "txtDate1").setText(to);
    Child<QPushButton>(dialog, "cmdOK").click();
  }
  static void Cancels(QDialog& dialog) { Child<QPushButton>(dialog, "cmdCancel").click(); }
  static void SearchesAndTakes(QDialog& dialog, const char* name) {
    Child<QLineEdit>(dialog, "txtSearch").clear();
    QTest::keyClicks(&Child<QLineEdit>(dialog, "txtSearch"), name);
    Child<QPushButton>(dialog, "cmdSearch").click();
    Child<QPushButton>(dialog, "cmdOK").click();
  }

  cli::Installation installation_{testing::UnitTest::GetInstance()->current_test_info()->name()};
  std::unique_ptr<RunningProgram> program_;
};

}  // namespace varnlog::app::test
