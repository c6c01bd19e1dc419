#include "tests/seals/SealedLog.h"

#include <fstream>
#include <iterator>
#include <unistd.h>

#include "tests/Paths.h"

namespace varnlog::seals {

namespace fs = std::filesystem;

namespace {

std::string Resource(const std::string& name) {
  std::ifstream file(fs::path(VARNLOG_SOURCE_DIR) / "resources" / name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void Set(dao::Field& field, const std::string& value) {
  if (field.Type() == dao::FieldType::kBoolean) {
    field.SetBoolean(value == "1");
  } else if (field.Type() == dao::FieldType::kDate) {
    field.SetDate(platform::DateTime::FromIso(value).value());
  } else {
    field.SetText(value);
  }
}

}  // namespace

SealedLog::SealedLog() : folder_(fs::temp_directory_path() / ("Röntgen siegel " + std::to_string(getpid()))) {
  fs::remove_all(folder_);
  fs::create_directories(folder_);
  const auto make = [this](const char* name, const char* source) {
    const auto made = engine_.CreateDatabase((folder_ / name).string(), "", 0);
    made->Execute(Resource(source));
    made->Close();
  };
  make("system.mdw", "workgroup.sql");
  make("Varnlog.mdb", "log.sql");
  engine_.SetSystemDB((folder_ / "system.mdw").string());
  workspace_ = engine_.CreateWorkspace("Test", "Admin", "");
}

SealedLog::~SealedLog() {
  if (log_) log_->Close();
  workspace_.reset();
  fs::remove_all(folder_);
}

void SealedLog::OpensUnsealed() {
  if (log_) log_->Close();
  log_ = workspace_->OpenDatabase((folder_ / "Varnlog.mdb").string(), false, false);
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
    Set(rows->Fields("tXraySName"), "Müller " + number);
    Set(rows->Fields("tXraySFirstname"), "Jörg");
    Set(rows->Fields("tXrayDBirthday"), "1960-02-01");
    Set(rows->Fields("tXraySSex"), "f");
    Set(rows->Fields("tXrayTs"), "2024-06-30 08:00:00");
    Set(rows->Fields("tXraySType"), "XI");
    if (!isOpen) Set(rows->Fields("tXraySVolt"), "60");
    for (const char* flag : {"tXrayBEdVolt", "tXrayBEdCur", "tXrayBEdDr", "tXrayBEdDiagRetry"})
      Set(rows->Fields(flag), isOpen ? "1" : "0");
    rows->Update();
  }
  changes.Commit();
}

void SealedLog::Edits(std::int64_t exposure, const std::map<std::string, std::string>& values) {
  const auto rows = log_->OpenRecordset("TXray", dao::RecordsetType::kTable);
  rows->SetIndex("PrimaryKey");
  rows->Seek("=", {exposure});
  rows->Edit();
  for (const auto& [field, value] : values) Set(rows->Fields(field), value);
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
