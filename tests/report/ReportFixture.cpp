#include "tests/report/ReportFixture.h"

#include <fstream>
#include <iterator>
#include <unistd.h>

#include "tests/Paths.h"

namespace varnlog::report {

namespace fs = std::filesystem;

namespace {

std::string MakeDatabase(dao::DBEngine& engine, const fs::path& file, const char* sqlFile) {
  const auto database = engine.CreateDatabase(file.string(), "", dao::kNoOption);
  std::ifstream sql(fs::path(VARNLOG_SOURCE_DIR) / "resources" / sqlFile);
  database->Execute(std::string(std::istreambuf_iterator<char>(sql), {}));
  database->Close();
  return file.string();
}

}  // namespace

LogFile::LogFile() {
  static int made = 0;
  folder_ = fs::temp_directory_path() /
            ("varnlog bericht ä " + std::to_string(getpid()) + " " + std::to_string(made++));
  fs::create_directories(folder_);
  engine_.SetSystemDB(MakeDatabase(engine_, folder_ / "system.mdw", "workgroup.sql"));
  workspace_ = engine_.CreateWorkspace("Reports", "Admin", "");
  database_ = workspace_->OpenDatabase(MakeDatabase(engine_, folder_ / "log.mdb", "log.sql"), false, false);
}

LogFile::~LogFile() {
  workspace_->Close();
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
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

std::string GivenTexts::GetText(core::TextKey key) const {
  const auto found = texts_.find(std::string(key.name()));
  return found == texts_.end() ? std::string(key.name()) : found->second;
}

bool Drawing::Has(std::string_view text) const {
  for (const Text& drawn : texts) {
    if (drawn.text == text) return true;
  }
  return false;
}

}  // namespace varnlog::report
