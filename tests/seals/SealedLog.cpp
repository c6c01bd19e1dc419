#include "tests/seals/SealedLog.h"

namespace varnlog::seals {

using test::SetField;

SealedLog::SealedLog() {
  MakeLog("Varnlog.mdb");
}

SealedLog::~SealedLog() {
  if (log_) log_->Close();
}

void SealedLog::OpensUnsealed() {
  if (log_) log_->Close();
  log_ = Open(Path("Varnlog.mdb"));
}

OpenReport SealedLog::Opens() {
  OpensUnsealed();
  ledger_ = std::make_shared<Ledger>(author_, clock_);
  return OpenLedger(*log_, ledger_);
}

void SealedLog::TakesIn(int exposures) {
  const Purpose purpose(ledger_.get(), SealKind::kIntake);
  dao::ChangeGroup changes = log_->BeginChanges();
  const auto rows = log_->OpenRecordset("TXray", dao::RecordsetType::kTable);
  for (int i = 0; i < exposures; ++i) {
    const std::string number = std::to_string(++taken_);
    const bool isOpen = taken_ % 2 == 1;
    rows->AddNew();
    SetField(rows->Fields("tXraySName"), "Müller " + number);
    SetField(rows->Fields("tXraySFirstname"), "Jörg");
    SetField(rows->Fields("tXrayDBirthday"), "1960-02-01");
    SetField(rows->Fields("tXraySSex"), "f");
    SetField(rows->Fields("tXrayTs"), "2024-06-30 08:00:00");
    SetField(rows->Fields("tXraySType"), "XI");
    if (!isOpen) SetField(rows->Fields("tXraySVolt"), "60");
    for (const char* flag : {"tXrayBEdVolt", "tXrayBEdCur", "tXrayBEdDr", "tXrayBEdDiagRetry"})
      SetField(rows->Fields(flag), isOpen ? "1" : "0");
    rows->Update();
  }
  changes.Commit();
}

void SealedLog::Edits(std::int64_t exposure, const std::map<std::string, std::string>& values) {
  const auto rows = log_->OpenRecordset("TXray", dao::RecordsetType::kTable);
  rows->SetIndex("PrimaryKey");
  rows->Seek("=", {exposure});
  rows->Edit();
  for (const auto& [field, value] : values) SetField(rows->Fields(field), value);
  rows->Update();
}

void SealedLog::SuiteChanges(std::int64_t exposure, const std::map<std::string, std::string>& values) {
  const Purpose purpose(ledger_.get(), SealKind::kIntake);
  Edits(exposure, values);
}

void SealedLog::Enters(std::int64_t exposure, const std::string& field, const std::string& value) {
  Edits(exposure, {{field, value}});
}

void SealedLog::Locks(std::int64_t exposure, const std::string& flag) {
  Edits(exposure, {{flag, "0"}});
}

std::string SealedLog::Value(std::int64_t exposure, const std::string& field) {
  const auto rows = log_->OpenRecordset("TXray", dao::RecordsetType::kTable);
  rows->SetIndex("PrimaryKey");
  rows->Seek("=", {exposure});
  return rows->NoMatch() ? "no such exposure" : std::string(rows->Fields(field).Text());
}

void SealedLog::ExpectSound(const std::string& when) {
  const Verification result = Verified();
  EXPECT_TRUE(result.IsSound()) << when;
  for (const Finding& finding : result.findings)
    ADD_FAILURE() << when << ": fault " << static_cast<int>(finding.fault) << " of " << finding.number << ", "
                  << finding.other << " " << finding.field;
}

}  // namespace varnlog::seals
