#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "db/dao/DBEngine.h"
#include "tests/logview/LogviewFakes.h"

namespace varnlog::logview {

/// A small log of its own for each test.
class LogFixture : public testing::Test {
 protected:
  LogFixture() {
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(folder_);
    log_ = engine_.CreateDatabase((folder_ / "Prüf log.mdb").string(), "", 0);
    log_->Execute(
        "CREATE TABLE TXray (tXrayCulIntIDPk INTEGER PRIMARY KEY, tXraySName TEXT(32) COLLATE JET,"
        " tXraySFirstname TEXT(32) COLLATE JET, tXrayDBirthday DATETIME, tXraySSex TEXT(1) COLLATE JET,"
        " tXraySPreg TEXT(1) COLLATE JET, tXrayBEdPreg YESNO, tXrayTs DATETIME,"
        " tXraySDr TEXT(12) COLLATE JET, tXrayBEdDr YESNO, tXraySType TEXT(4) COLLATE JET,"
        " tXrayBEdType YESNO, tXraySDiagRetry TEXT(16) COLLATE JET, tXrayBEdDiagRetry YESNO,"
        " tXraySRegio TEXT(16) COLLATE JET, tXrayBEdRegio YESNO, tXraySRadDur TEXT(8) COLLATE JET,"
        " tXrayBEdRadDur YESNO, tXraySVolt TEXT(5) COLLATE JET, tXrayBEdVolt YESNO,"
        " tXraySCur TEXT(5) COLLATE JET, tXrayBEdCur YESNO, tXraySDose TEXT(32) COLLATE JET,"
        " tXrayBEdDose YESNO, tXraySComment TEXT(255) COLLATE JET)");
  }

  ~LogFixture() override {
    log_->Close();
    std::filesystem::remove_all(folder_);
  }

  /// Text fields as they are, yes/no fields as "1" and "0", dates as in the log. Not named: NULL.
  void TakesExposure(const std::map<std::string, std::string>& values) {
    const auto rows = log_->OpenRecordset("TXray", dao::RecordsetType::kTable);
    rows->AddNew();
    for (const auto& [name, value] : values) {
      dao::Field& field = rows->Fields(name);
      if (field.Type() == dao::FieldType::kBoolean) {
        field.SetBoolean(value == "1");
      } else if (field.Type() == dao::FieldType::kDate) {
        field.SetDate(platform::DateTime::FromIso(value).value());
      } else {
        field.SetText(value);
      }
    }
    rows->Update();
  }

  /// All rows in the order in which they came, the first one current.
  std::unique_ptr<dao::Recordset> Rows() {
    return log_->OpenRecordset("SELECT TXray.* From TXray ORDER BY TXray.tXrayCulIntIDPk;",
                               dao::RecordsetType::kDynaset);
  }

  std::string Stored(int row, const std::string& field) {
    const auto rows = Rows();
    rows->Move(row);
    return std::string(rows->Fields(field).Text());
  }

  void LosesRow(int id) { log_->Execute("DELETE FROM TXray WHERE tXrayCulIntIDPk = " + std::to_string(id)); }

  std::filesystem::path folder_ = std::filesystem::temp_directory_path() /
                                  (std::string("varnlog prüfung ") +
                                   testing::UnitTest::GetInstance()->current_test_info()->test_suite_name() +
                                   testing::UnitTest::GetInstance()->current_test_info()->name());
  dao::DBEngine engine_;
  std::shared_ptr<dao::Database> log_;
  FakeTexts texts_;
  FakeToothScheme fdi_{false};
  FakeToothScheme us_{true};
};

}  // namespace varnlog::logview
