#pragma once

#include <map>

#include "tests/support/TestFolder.h"

namespace varnlog::faults {

using test::AppendFile;
using test::ReadFile;
using test::WriteFile;

/// What lies in a folder: names and contents.
using Files = std::map<std::string, std::string>;

[[nodiscard]] inline Files ReadFolder(const std::filesystem::path& folder) {
  Files files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.is_regular_file()) files[entry.path().filename().string()] = ReadFile(entry.path());
  }
  return files;
}

/// Leaves exactly these files there.
inline void WriteFolder(const std::filesystem::path& folder, const Files& files) {
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  for (const auto& [name, bytes] : files) WriteFile(folder / name, bytes);
}

}  // namespace varnlog::faults
