#include "tests/db/dao/EngineFixture.h"

#include <fstream>

namespace varnlog::dao {

EngineTest::Station EngineTest::AnotherStation() const {
  auto engine = std::make_unique<DBEngine>();
  engine->SetSystemDB(engine_.SystemDB());
  engine->SetOption(EngineOption::kLockDelay, 5);
  auto workspace = engine->CreateWorkspace("Other", "Admin", "");
  return {std::move(engine), std::move(workspace)};
}

void EngineTest::Damage(const std::string& path, std::uint64_t offset, std::size_t length, char byte) {
  std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
  file.seekp(static_cast<std::streamoff>(offset));
  file << std::string(length, byte);
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
