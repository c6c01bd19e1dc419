#pragma once

#include <map>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "db/dao/DBEngine.h"
#include "tests/logview/LogviewFakes.h"
#include "tests/support/LogFolder.h"

namespace varnlog::logview {

/// A small log of its own for each test.
class LogFixture : public testing::Test, protected test::LogFolder {
 protected:
  ~LogFixture() override { log_->Close(); }

  /// Text fields as they are, yes/no fields as "1" and "0", dates as in the log. Not named: NULL.
  void TakesExposure(const std::map<std::string, std::string>& values) {
    const auto rows = log_->OpenRecordset("TXray", dao::RecordsetType::kTable);
    rows->AddNew();
    for (const auto& [name, value] : values) test::SetField(rows->Fields(name), value);
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

  std::shared_ptr<dao::Database> log_ = Make("log.mdb", "log.sql");
  FakeTexts texts_;
  FakeToothScheme fdi_{false};
  FakeToothScheme us_{true};
};

}  // namespace varnlog::logview
