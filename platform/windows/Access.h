#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "platform/windows/System.h"

namespace varnlog::platform {

/// Who a user, a group or the system itself is (a SID).
using Identifier = std::vector<std::byte>;

/// The user that this process runs under; empty when the system does not say.
[[nodiscard]] Identifier CurrentUser();

/// Whether the account is the administrators' group, or the system itself.
[[nodiscard]] bool IsAdministrator(const Identifier& account);

/// The owner of an open file; empty when it cannot be asked.
[[nodiscard]] Identifier OwnerOf(HANDLE file);

/// Gives the open file the access list of its model if that has one of its own. What a folder hands down to
/// its files needs no copying: the system has done that when it made the file.
void CopyOwnAccess(const std::filesystem::path& model, HANDLE file);

/// Whether somebody who needs no account may change the file, or the files in the folder; true when that
/// cannot be found out.
[[nodiscard]] bool OthersMayChange(const std::filesystem::path& path);

}  // namespace varnlog::platform
