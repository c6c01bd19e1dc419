#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace varnlog::exports {

/// The entries that a ZIP archive lists, and how many bytes each of them unpacks to; empty when there is no
/// list that can be read.
[[nodiscard]] std::map<std::string, std::uint64_t> ListArchive(const std::filesystem::path& file);

}  // namespace varnlog::exports
