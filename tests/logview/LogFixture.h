#pragma once

#include <map>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "db/dao/DBEngine.h"
#include "tests/logview/LogviewFakes.h"
#include "tests/support/Databases.h"
#include "tests/support/TestFolder.h"

namespace varnlog::logview {

/// A small log of its own for each test.
class LogFixture : public testing::Test {
 protected:
  LogFixture() { log_ = test::MakeDatabase(engine_, folder_ / "Prüf log.mdb", "log.sql"); }
  ~LogFixture() override { log_->Close(); }

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

  test::TestFolder folder_;
  dao::DBEngine engine_;
  std::shared_ptr<dao::Database> log_;
  FakeTexts texts_;
  FakeToothScheme fdi_{false};
  FakeToothScheme us_{true};
};

}  // namespace varnlog::logview
