#pragma once

#include <string>
#include <string_view>

namespace varnlog::platform {

/// The SHA-256 digest of the bytes as 64 hexadecimal digits in lower case.
[[nodiscard]] std::string Sha256Hex(std::string_view bytes);

/// The version of the library behind it, such as "3.8".
[[nodiscard]] std::string Sha256LibraryVersion();

}  // namespace varnlog::platform
