#pragma once

#include <filesystem>
#include <system_error>

#include "platform/SafeFile.h"

/// What each system does in its own way with the names of files; SafeFile is built on it and is what to call.
namespace varnlog::platform {

/// Renames, not yet for good.
[[nodiscard]] std::error_code GiveName(const std::filesystem::path& source,
                                       const std::filesystem::path& target, IfTaken ifTaken);

/// Gives the file a second name (a hard link), not yet for good; never overwrites.
[[nodiscard]] std::error_code AddName(const std::filesystem::path& path, const std::filesystem::path& second);

/// Takes a name from a file, not yet for good; a folder is refused, a missing file is an error.
[[nodiscard]] std::error_code RemoveName(const std::filesystem::path& path);

}  // namespace varnlog::platform
