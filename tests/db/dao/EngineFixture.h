#pragma once

#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "db/dao/DBEngine.h"
#include "tests/support/LogFolder.h"

namespace varnlog::dao {

using test::Damages;
using test::ErrorOf;
using test::ReadFile;
using enum ErrorNumber;

class EngineTest : public testing::Test, protected test::LogFolder {
 protected:
  // A test does not wait for a lock that stays.
  EngineTest() { engine_.SetOption(EngineOption::kLockDelay, 5); }

  /// A new log that takes any change, as a file does until somebody gives it rules.
  std::string MakeLog(const std::string& name = "log.mdb") {
    const std::string path = LogFolder::MakeLog(name);
    if (test::LogsAreOnServer()) test::PrivateServer::ForgoRules(path);
    return path;
  }

  /// On a server a change of others is announced, which may take a moment.
  void HearsOfOthers() {
    if (test::LogsAreOnServer()) engine_.Idle(true);
  }

  /// Another workstation: an engine and a workspace of its own.
  struct Station {
    std::unique_ptr<DBEngine> engine;
    std::shared_ptr<Workspace> workspace;
  };
  [[nodiscard]] Station AnotherStation() const {
    auto engine = std::make_unique<DBEngine>();
    engine->SetSystemDB(engine_.SystemDB());
    engine->SetOption(EngineOption::kLockDelay, 5);
    auto workspace = engine->CreateWorkspace("Other", "Admin", "");
    return {std::move(engine), std::move(workspace)};
  }

  /// Overwrites `length` bytes from `offset` on.
  static void Damage(const std::string& path, std::uint64_t offset, std::size_t length, char byte = '\0') {
    std::fstream file(platform::ToPath(path), std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(static_cast<std::streamoff>(offset));
    file << std::string(length, byte);
  }
};

/// The text of the engine error that `operation` throws, "" when there is none.
[[nodiscard]] inline std::string ErrorTextOf(const std::function<void()>& operation) {
  try {
    operation();
    return {};
  } catch (const EngineError& error) {
    return error.what();
  }
}

/// One exposure: the fields by which it is known.
struct Exposure {
  std::string name;
  std::string firstname;
  platform::DateTime birthday;
  platform::DateTime ts;
};
inline void AddExposure(Recordset& table, const Exposure& exposure) {
  table.AddNew();
  table.Fields("tXraySName").SetText(exposure.name);
  table.Fields("tXraySFirstname").SetText(exposure.firstname);
  table.Fields("tXrayDBirthday").SetDate(exposure.birthday);
  table.Fields("tXrayTs").SetDate(exposure.ts);
  table.Update();
}
[[nodiscard]] inline bool FindExposure(Recordset& table, const Exposure& exposure) {
  table.SetIndex("iXRayIdent");
  table.Seek("=", {std::string_view(exposure.name), std::string_view(exposure.firstname), exposure.birthday,
                   exposure.ts});
  return !table.NoMatch();
}
/// 1 March 2024 at 8:00 and that many minutes.
[[nodiscard]] inline platform::DateTime Minute(int minutes) {
  return platform::DateTime::FromSeconds(platform::DateTime::FromCivil(2024, 3, 1, 8)->SecondsSinceEpoch() +
                                         std::int64_t{minutes} * 60);
}
/// Adds patients "P0", "P1", ... a minute apart, in one transaction.
inline void FillLog(Workspace& workspace, Database& log, int rows) {
  workspace.BeginTrans();
  const auto table = log.OpenRecordset("TXray");
  for (int i = 0; i < rows; ++i)
    AddExposure(*table,
                {"P" + std::to_string(i), "Anna", *platform::DateTime::FromCivil(1970, 1, 1), Minute(i)});
  workspace.CommitTrans();
}

}  // namespace varnlog::dao
