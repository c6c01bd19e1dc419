#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include "tests/support/TestFolder.h"

namespace varnlog::faults {

using test::AppendFile;
using test::ReadFile;

/// Throws when that is not possible.
void WriteFile(const std::filesystem::path& file, std::string_view bytes);

/// What lies in a folder: names and contents.
using Files = std::map<std::string, std::string>;

[[nodiscard]] Files ReadFolder(const std::filesystem::path& folder);
/// Leaves exactly these files there.
void WriteFolder(const std::filesystem::path& folder, const Files& files);

}  // namespace varnlog::faults
