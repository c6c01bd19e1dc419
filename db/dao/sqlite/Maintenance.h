#pragma once

#include <memory>
#include <string>
#include <system_error>

#include "db/dao/DBEngine.h"

namespace varnlog::dao {

struct EngineState;

/// Writes a compacted copy of an open database to `target`, which must not exist: whole, verified and on the
/// disk, or not at all.
void CopyCompacted(Connection& source, const std::string& target, const MaintenanceProgress& progress,
                   const std::shared_ptr<EngineState>& state);

/// As DBEngine::RepairDatabase().
void RepairFile(const std::string& path, const MaintenanceProgress& progress,
                const std::shared_ptr<EngineState>& state);

/// Throws the engine error that a failed file operation stands for.
[[noreturn]] void ThrowFileError(const std::error_code& error, const std::string& path);

/// Puts the file `made` in the place of `target`, in one step and with the old one's permissions.
void ReplaceDatabaseFile(const std::string& made, const std::string& target);

/// Removes a file and the journal that may lie beside it, if they are there.
void RemoveDatabaseFile(const std::string& path) noexcept;

}  // namespace varnlog::dao
