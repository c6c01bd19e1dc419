#include "tests/report/ReportFixture.h"

#include <algorithm>

namespace varnlog::report {

LogFile::LogFile() : database_(Open(MakeLog())) {}

LogFile::~LogFile() {
  workspace_->Close();
}

void LogFile::Add(const LoggedRow& row, int times) {
  workspace_->BeginTrans();
  const auto table = database_->OpenRecordset("TXray");
  for (int i = 0; i < times; ++i) {
    table->AddNew();
    const auto taken = platform::DateTime::FromSeconds(row.taken.SecondsSinceEpoch() + i);
    const std::pair<const char*, std::string> values[] = {{"tXraySName", row.name},
                                                          {"tXraySFirstname", row.firstName},
                                                          {"tXrayDBirthday", row.birth.ToIso()},
                                                          {"tXrayTs", taken.ToIso()},
                                                          {"tXraySPreg", row.pregnancy},
                                                          {"tXraySDr", row.person},
                                                          {"tXraySType", row.type},
                                                          {"tXraySRegio", row.region},
                                                          {"tXraySRadDur", "120"},
                                                          {"tXraySVolt", "60"},
                                                          {"tXraySCur", "7"},
                                                          {"tXraySDose", "14.2"},
                                                          {"tXraySDiagRetry", row.retry}};
    for (const auto& [field, value] : values) test::SetField(table->Fields(field), value);
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
