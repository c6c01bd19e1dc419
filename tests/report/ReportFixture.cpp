#include "tests/report/ReportFixture.h"

#include <algorithm>

#include "tests/support/Databases.h"

namespace varnlog::report {

LogFile::LogFile() {
  test::MakeDatabase(engine_, folder_ / "system.mdw", "workgroup.sql")->Close();
  test::MakeDatabase(engine_, folder_ / "log.mdb", "log.sql")->Close();
  engine_.SetSystemDB((folder_ / "system.mdw").string());
  workspace_ = engine_.CreateWorkspace("Reports", "Admin", "");
  database_ = workspace_->OpenDatabase((folder_ / "log.mdb").string(), false, false);
}

LogFile::~LogFile() {
  workspace_->Close();
}

void LogFile::Add(const LoggedRow& row, int times) {
  workspace_->BeginTrans();
  const auto table = database_->OpenRecordset("TXray");
  for (int i = 0; i < times; ++i) {
    table->AddNew();
    table->Fields("tXraySName").SetText(row.name);
    table->Fields("tXraySFirstname").SetText(row.firstName);
    table->Fields("tXrayDBirthday").SetDate(row.birth);
    table->Fields("tXrayTs").SetDate(platform::DateTime::FromSeconds(row.taken.SecondsSinceEpoch() + i));
    table->Fields("tXraySPreg").SetText(row.pregnancy);
    table->Fields("tXraySDr").SetText(row.person);
    table->Fields("tXraySType").SetText(row.type);
    table->Fields("tXraySRegio").SetText(row.region);
    table->Fields("tXraySRadDur").SetText("120");
    table->Fields("tXraySVolt").SetText("60");
    table->Fields("tXraySCur").SetText("7");
    table->Fields("tXraySDose").SetText("14.2");
    table->Fields("tXraySDiagRetry").SetText(row.retry);
    if (!row.comment.empty()) table->Fields("tXraySComment").SetText(row.comment);
    table->Update();
  }
  workspace_->CommitTrans();
}

std::unique_ptr<dao::Recordset> LogFile::Rows() {
  return database_->OpenRecordset("SELECT TXray.* FROM TXray ORDER BY TXray.tXrayCulIntIDPk;");
}

bool Drawing::HasAt(const Text& text) const {
  return std::any_of(texts.begin(), texts.end(), [&text](const Text& drawn) {
    return drawn.text == text.text && drawn.left == text.left && drawn.baseline == text.baseline;
  });
}

bool Drawing::Has(std::string_view text) const {
  for (const Text& drawn : texts) {
    if (drawn.text == text) return true;
  }
  return false;
}

}  // namespace varnlog::report
