#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "db/dao/DBEngine.h"

namespace varnlog::dao {

/// A folder of its own with a workgroup file, an engine and an open workspace.
class EngineTest : public testing::Test {
 protected:
  EngineTest();
  ~EngineTest() override;

  [[nodiscard]] std::string Path(const std::string& name) const { return (folder_ / name).string(); }
  /// A new empty log, closed again.
  std::string MakeLog(const std::string& name = "log.mdb");
  [[nodiscard]] std::shared_ptr<Database> Open(const std::string& path, bool readOnly = false);
  /// Another workstation: an engine and a workspace of its own.
  struct Station {
    std::unique_ptr<DBEngine> engine;
    std::shared_ptr<Workspace> workspace;
  };
  [[nodiscard]] Station AnotherStation() const;

  void WriteFile(const std::string& name, const std::string& content) const;
  [[nodiscard]] std::string ReadFile(const std::string& path) const;
  /// Overwrites `length` bytes from `offset` on.
  static void Damage(const std::string& path, std::uint64_t offset, std::size_t length, char byte = '\0');
  [[nodiscard]] std::vector<std::string> FilesInFolder() const;

  std::filesystem::path folder_;
  DBEngine engine_;
  std::shared_ptr<Workspace> workspace_;
};

/// The number of the engine error that `operation` throws; kNone when it throws none.
[[nodiscard]] ErrorNumber ErrorOf(const std::function<void()>& operation);
/// The text of that error, "" when there is none.
[[nodiscard]] std::string ErrorTextOf(const std::function<void()>& operation);

/// One exposure: the fields by which it is known.
struct Exposure {
  std::string name;
  std::string firstname;
  platform::DateTime birthday;
  platform::DateTime ts;
};
void AddExposure(Recordset& table, const Exposure& exposure);
[[nodiscard]] bool FindExposure(Recordset& table, const Exposure& exposure);
/// 1 March 2024 at 8:00 and that many minutes.
[[nodiscard]] platform::DateTime Minute(int minutes);
/// Adds patients "P0", "P1", ... a minute apart, in one transaction.
void FillLog(Workspace& workspace, Database& log, int rows);

}  // namespace varnlog::dao
