#pragma once

#include <map>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "db/dao/DBEngine.h"
#include "platform/Clock.h"
#include "seals/Ledger.h"
#include "seals/LogSeals.h"
#include "tests/logview/LogviewFakes.h"
#include "tests/support/LogFolder.h"

namespace varnlog::logview {

/// A small log of its own for each test.
class LogFixture : public testing::Test, protected test::LogFolder {
 protected:
  LogFixture() { static_cast<void>(seals::OpenLedger(*log_, ledger_)); }
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

  void LosesRow(int id) { Damages("DELETE FROM TXray WHERE tXrayCulIntIDPk = " + std::to_string(id)); }
  void Damages(const std::string& sql) { test::Damages(*log_, sql); }

  std::shared_ptr<dao::Database> log_ = Make("log.mdb", "log.sql");
  platform::FixedClock clock_{*platform::DateTime::FromCivil(2024, 6, 30, 12)};
  std::shared_ptr<seals::Ledger> ledger_ = std::make_shared<seals::Ledger>(
      platform::Author{"anna", "Anna Müller", "Röntgen 1", "varnlog test", "1-1-a"}, clock_);
  FakeTexts texts_;
  FakeToothScheme fdi_{false};
  FakeToothScheme us_{true};
};

}  // namespace varnlog::logview
