#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "db/dao/DBEngine.h"
#include "tests/Paths.h"
#include "tests/support/PrivateServer.h"
#include "tests/support/TestFolder.h"

namespace varnlog::test {

/// A folder with a workgroup file, an engine and an open workspace.
class LogFolder {
 public:
  LogFolder() {
    Make("system.mdw", "workgroup.sql")->Close();
    engine_.SetSystemDB(Path("system.mdw"));
    workspace_ = engine_.CreateWorkspace("Test", "Admin", "");
  }

  [[nodiscard]] std::string Path(const std::string& name) const { return (folder_ / name).string(); }
  /// A database of the program folder ("log.sql", "workgroup.sql"), open.
  std::shared_ptr<dao::Database> Make(const std::string& name, const char* source) {
    if (LogsAreOnServer() && source == std::string_view("log.sql")) {
      PrivateServer::Instance().MakeLog(folder_ / name);
      return Open(Path(name));
    }
    auto database = engine_.CreateDatabase(Path(name), "", 0);
    database->Execute(ReadFile(std::filesystem::path(VARNLOG_SOURCE_DIR) / "resources" / source));
    return database;
  }
  /// The path of a new empty log, closed again.
  std::string MakeLog(const std::string& name = "log.mdb") {
    Make(name, "log.sql")->Close();
    return Path(name);
  }
  [[nodiscard]] std::shared_ptr<dao::Database> Open(const std::string& path, bool readOnly = false) {
    return workspace_->OpenDatabase(path, false, readOnly);
  }

  TestFolder folder_;
  dao::DBEngine engine_;
  std::shared_ptr<dao::Workspace> workspace_;
};

/// Changes a log in the storage's SQL as nobody should: no rule holds it up, nothing is noted.
inline void Damages(dao::Database& log, const std::string& sql) {
  if (LogsAreOnServer()) {
    PrivateServer::Damage(log.Name(), sql);
    return;
  }
  const auto suspended = log.SuspendRules();
  log.Execute(sql);
}

/// Gives a field the value that this text stands for: "1" and "0", ISO dates, texts.
inline void SetField(dao::Field& field, const std::string& text) {
  if (field.Type() == dao::FieldType::kBoolean) {
    field.SetBoolean(text == "1");
  } else if (field.Type() == dao::FieldType::kDate) {
    field.SetDate(platform::DateTime::FromIso(text).value());
  } else {
    field.SetText(text);
  }
}

/// The number of the engine error that `operation` throws; kNone when it throws none.
[[nodiscard]] inline dao::ErrorNumber ErrorOf(const std::function<void()>& operation) {
  try {
    operation();
    return dao::ErrorNumber::kNone;
  } catch (const dao::EngineError& error) {
    return error.number();
  }
}

}  // namespace varnlog::test
