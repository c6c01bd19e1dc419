#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace varnlog::dao {

struct EngineState;

/// Throws kWorkgroupFileMissing unless `path` is a workgroup file that can be read, and kBadAccount unless it
/// has the account (letter case ignored) with that password (letter case counts).
///
/// A workgroup file is a database with the table Accounts (Name, Salt, PasswordHash). An empty PasswordHash
/// stands for an empty password.
void CheckAccount(const std::string& path, std::string_view user, std::string_view password,
                  const std::shared_ptr<EngineState>& state);

/// What stands in the column PasswordHash for a password.
[[nodiscard]] std::string PasswordHash(std::string_view salt, std::string_view password);

}  // namespace varnlog::dao
