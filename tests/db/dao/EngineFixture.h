#pragma once

#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "db/dao/DBEngine.h"
#include "tests/support/LogFolder.h"

namespace varnlog::dao {

using test::ErrorOf;
using test::ReadFile;
using enum ErrorNumber;

class EngineTest : public testing::Test, protected test::LogFolder {
 protected:
  // A test does not wait for a lock that stays.
  EngineTest() { engine_.SetOption(EngineOption::kLockDelay, 5); }

  /// Another workstation: an engine and a workspace of its own.
  struct Station {
    std::unique_ptr<DBEngine> engine;
    std::shared_ptr<Workspace> workspace;
  };
  [[nodiscard]] Station AnotherStation() const;

  /// Overwrites `length` bytes from `offset` on.
  static void Damage(const std::string& path, std::uint64_t offset, std::size_t length, char byte = '\0');
};

/// The text of the engine error that `operation` throws, "" when there is none.
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
