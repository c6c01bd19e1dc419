#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

#include "legacy/JetBytes.h"

namespace varnlog::legacy {

/// The whole file; databases of these versions have at most two gigabytes, and nothing longer is read.
[[nodiscard]] std::optional<std::string> ReadOldFile(const std::filesystem::path& path,
                                                     std::error_code& error);

/// True when the file begins as a Jet database does; false when it cannot be read, too.
[[nodiscard]] bool IsJetFile(const std::filesystem::path& path);

[[nodiscard]] inline Bytes AsBytes(const std::string& content) {
  return std::as_bytes(std::span(content.data(), content.size()));
}

}  // namespace varnlog::legacy
