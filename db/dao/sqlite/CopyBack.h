#pragma once

#include <filesystem>
#include <string>

#include "db/dao/DBEngine.h"

namespace varnlog::dao {

class Connection;

/// Puts the pages of `made` in the place of those of `target`, which is open exclusively, in one transaction:
/// afterwards the file has the new content or the old one, whatever happens, and it stays the file that other
/// workstations have open. `progress` gets the part done and returns false to stop (kCancelled).
void CopyBack(Connection& made, Connection& target, const MaintenanceProgress& progress);

/// Writes the file's content, whose lock the connection holds, beside it as NAME and `suffix` (NAME, suffix,
/// 2, ... where there is one already); the result is the copy.
[[nodiscard]] std::filesystem::path KeepCopy(Connection& file, const std::string& suffix);

}  // namespace varnlog::dao
