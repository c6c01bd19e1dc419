#pragma once

#include <string>
#include <string_view>

namespace varnlog::platform {

/// The SHA-256 digest of the bytes as 64 hexadecimal digits in lower case.
[[nodiscard]] std::string Sha256Hex(std::string_view bytes);

}  // namespace varnlog::platform
