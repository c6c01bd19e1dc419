#pragma once

#include <memory>
#include <string>
#include <system_error>

#include "db/dao/DBEngine.h"

namespace varnlog::dao {

class Connection;
struct EngineState;

/// Writes a compacted copy of an open database to a file that is there and empty, and verifies it. What a
/// failure leaves in that file is of no use.
void CopyCompacted(Connection& source, const std::string& emptyFile, const MaintenanceProgress& progress,
                   const std::shared_ptr<EngineState>& state);

/// As DBEngine::RepairDatabase().
[[nodiscard]] RepairReport RepairFile(const std::string& path, const MaintenanceProgress& progress,
                                      const FinishRepair& finish, const std::shared_ptr<EngineState>& state);

/// Throws the engine error that a failed file operation stands for.
[[noreturn]] void ThrowFileError(const std::error_code& error, const std::string& path);

}  // namespace varnlog::dao
