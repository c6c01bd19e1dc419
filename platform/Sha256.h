#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace varnlog::platform {

/// A SHA-256 digest over bytes that come in portions.
class Sha256 {
 public:
  Sha256();
  void Add(std::string_view bytes);
  /// The digest as 64 hexadecimal digits in lower case; the next one begins.
  [[nodiscard]] std::string Hex();

 private:
  // The library's own state, which stays behind this door.
  alignas(8) std::array<std::byte, 128> state_{};
};

/// The SHA-256 digest of the bytes as 64 hexadecimal digits in lower case.
[[nodiscard]] std::string Sha256Hex(std::string_view bytes);

/// A password made slow to guess (PBKDF2 over HMAC-SHA-256): 32 bytes as 64 hexadecimal digits in lower case.
[[nodiscard]] std::string PasswordDigest(std::string_view password, std::string_view salt, unsigned rounds);

/// The version of the library behind it, such as "3.8".
[[nodiscard]] std::string Sha256LibraryVersion();

}  // namespace varnlog::platform
