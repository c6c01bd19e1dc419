#include "tests/db/dao/EngineFixture.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <unistd.h>

#include "tests/support/Databases.h"

namespace varnlog::dao {

namespace fs = std::filesystem;

namespace {

fs::path FreshFolder() {
  static int number = 0;
  const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
  std::string name = std::string(test->test_suite_name()) + "." + test->name();
  std::replace(name.begin(), name.end(), '/', '-');
  // A blank and an umlaut, as folders of practices have them.
  fs::path folder = fs::temp_directory_path() / ("Röntgen buch " + name + " " + std::to_string(::getpid()) +
                                                 "-" + std::to_string(++number));
  fs::create_directories(folder);
  return folder;
}

}  // namespace

EngineTest::EngineTest() : folder_(FreshFolder()) {
  test::MakeDatabase(engine_, Path("system.mdw"), "workgroup.sql")->Close();
  engine_.SetSystemDB(Path("system.mdw"));
  engine_.SetOption(EngineOption::kLockDelay, 5);  // a test does not wait for a lock that stays
  workspace_ = engine_.CreateWorkspace("Test", "Admin", "");
}

EngineTest::~EngineTest() {
  workspace_.reset();
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

std::string EngineTest::MakeLog(const std::string& name) {
  test::MakeDatabase(engine_, Path(name), "log.sql")->Close();
  return Path(name);
}

std::shared_ptr<Database> EngineTest::Open(const std::string& path, bool readOnly) {
  return workspace_->OpenDatabase(path, false, readOnly);
}

EngineTest::Station EngineTest::AnotherStation() const {
  auto engine = std::make_unique<DBEngine>();
  engine->SetSystemDB(engine_.SystemDB());
  engine->SetOption(EngineOption::kLockDelay, 5);
  auto workspace = engine->CreateWorkspace("Other", "Admin", "");
  return {std::move(engine), std::move(workspace)};
}

void EngineTest::WriteFile(const std::string& name, const std::string& content) const {
  std::ofstream(folder_ / name, std::ios::binary) << content;
}

std::string EngineTest::ReadFile(const std::string& path) const {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void EngineTest::Damage(const std::string& path, std::uint64_t offset, std::size_t length, char byte) {
  std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
  file.seekp(static_cast<std::streamoff>(offset));
  file << std::string(length, byte);
}

std::vector<std::string> EngineTest::FilesInFolder() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder_)) names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

ErrorNumber ErrorOf(const std::function<void()>& operation) {
  try {
    operation();
    return ErrorNumber::kNone;
  } catch (const EngineError& error) {
    return error.number();
  }
}

std::string ErrorTextOf(const std::function<void()>& operation) {
  try {
    operation();
    return {};
  } catch (const EngineError& error) {
    return error.what();
  }
}

void AddExposure(Recordset& table, const Exposure& exposure) {
  table.AddNew();
  table.Fields("tXraySName").SetText(exposure.name);
  table.Fields("tXraySFirstname").SetText(exposure.firstname);
  table.Fields("tXrayDBirthday").SetDate(exposure.birthday);
  table.Fields("tXrayTs").SetDate(exposure.ts);
  table.Update();
}

bool FindExposure(Recordset& table, const Exposure& exposure) {
  table.SetIndex("iXRayIdent");
  table.Seek("=", {std::string_view(exposure.name), std::string_view(exposure.firstname), exposure.birthday,
                   exposure.ts});
  return !table.NoMatch();
}

platform::DateTime Minute(int minutes) {
  return platform::DateTime::FromSeconds(platform::DateTime::FromCivil(2024, 3, 1, 8)->SecondsSinceEpoch() +
                                         std::int64_t{minutes} * 60);
}

void FillLog(Workspace& workspace, Database& log, int rows) {
  workspace.BeginTrans();
  const auto table = log.OpenRecordset("TXray");
  for (int i = 0; i < rows; ++i)
    AddExposure(*table,
                {"P" + std::to_string(i), "Anna", *platform::DateTime::FromCivil(1970, 1, 1), Minute(i)});
  workspace.CommitTrans();
}

}  // namespace varnlog::dao
