#pragma once

#include <map>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "db/dao/DBEngine.h"
#include "platform/Clock.h"
#include "seals/Ledger.h"
#include "seals/LogSeals.h"
#include "seals/Verifier.h"
#include "tests/support/LogFolder.h"

namespace varnlog::seals {

/// A log of its own for each test, at a workstation of its own.
class SealedLog : public testing::Test, protected test::LogFolder {
 protected:
  SealedLog() { MakeLog("Varnlog.mdb"); }
  ~SealedLog() override {
    if (log_) log_->Close();
  }

  /// Opens the log anew; nothing from an earlier opening is used any more.
  OpenReport Opens() {
    OpensUnsealed();
    ledger_ = std::make_shared<Ledger>(author_, clock_);
    return OpenLedger(*log_, ledger_);
  }
  /// Only the file, as a program that knows nothing of seals opens it.
  void OpensUnsealed() {
    if (log_) log_->Close();
    log_ = Open(Path("Varnlog.mdb"));
  }

  /// The imaging suite's rows, in one transaction. Every second value is open.
  void TakesIn(int exposures) {
    const Purpose purpose(ledger_.get(), SealKind::kIntake);
    dao::ChangeGroup changes = log_->BeginChanges();
    const auto rows = log_->OpenRecordset("TXray", dao::RecordsetType::kTable);
    for (int i = 0; i < exposures; ++i) {
      const std::string number = std::to_string(++taken_);
      const bool isOpen = taken_ % 2 == 1;
      rows->AddNew();
      test::SetField(rows->Fields("tXraySName"), "Müller " + number);
      test::SetField(rows->Fields("tXraySFirstname"), "Jörg");
      test::SetField(rows->Fields("tXrayDBirthday"), "1960-02-01");
      test::SetField(rows->Fields("tXraySSex"), "f");
      test::SetField(rows->Fields("tXrayTs"), "2024-06-30 08:00:00");
      test::SetField(rows->Fields("tXraySType"), "XI");
      if (!isOpen) test::SetField(rows->Fields("tXraySVolt"), "60");
      for (const char* flag : {"tXrayBEdVolt", "tXrayBEdCur", "tXrayBEdDr", "tXrayBEdDiagRetry"})
        test::SetField(rows->Fields(flag), isOpen ? "1" : "0");
      rows->Update();
    }
    changes.Commit();
  }
  /// The suite's information about one of them.
  void SuiteChanges(std::int64_t exposure, const std::map<std::string, std::string>& values) {
    const Purpose purpose(ledger_.get(), SealKind::kIntake);
    Edits(exposure, values);
  }
  void Enters(std::int64_t exposure, const std::string& field, const std::string& value) {
    Edits(exposure, {{field, value}});
  }
  void Locks(std::int64_t exposure, const std::string& flag) { Edits(exposure, {{flag, "0"}}); }
  [[nodiscard]] std::string Value(std::int64_t exposure, const std::string& field) {
    const auto rows = log_->OpenRecordset("TXray", dao::RecordsetType::kTable);
    rows->SetIndex("PrimaryKey");
    rows->Seek("=", {exposure});
    return rows->NoMatch() ? "no such exposure" : std::string(rows->Fields(field).Text());
  }
  /// In the storage's SQL, the rules obeyed or not.
  void Executes(const std::string& sql) { log_->Execute(sql); }

  [[nodiscard]] Verification Verified() { return Verify(*log_); }
  void ExpectSound(const std::string& when = {}) {
    const Verification result = Verified();
    EXPECT_TRUE(result.IsSound()) << when;
    for (const Finding& finding : result.findings)
      ADD_FAILURE() << when << ": fault " << static_cast<int>(finding.fault) << " of " << finding.number
                    << ", " << finding.other << " " << finding.field;
  }

  std::shared_ptr<dao::Database> log_;
  platform::Author author_{"anna", "Anna Müller", "Röntgen 1", "varnlog test", "1-1-a"};
  platform::FixedClock clock_{*platform::DateTime::FromCivil(2024, 6, 30, 12)};
  std::shared_ptr<Ledger> ledger_;

 private:
  void Edits(std::int64_t exposure, const std::map<std::string, std::string>& values) {
    const auto rows = log_->OpenRecordset("TXray", dao::RecordsetType::kTable);
    rows->SetIndex("PrimaryKey");
    rows->Seek("=", {exposure});
    rows->Edit();
    for (const auto& [field, value] : values) test::SetField(rows->Fields(field), value);
    rows->Update();
  }
  int taken_ = 0;
};

}  // namespace varnlog::seals
