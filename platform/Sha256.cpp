#include "platform/Sha256.h"

#include <array>
#include <cstdint>
#include <nettle/sha2.h>
#include <nettle/version.h>

namespace varnlog::platform {

std::string Sha256Hex(std::string_view bytes) {
  sha256_ctx context;
  sha256_init(&context);
  sha256_update(&context, bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()));
  std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
  sha256_digest(&context, digest.size(), digest.data());
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string hex;
  for (const std::uint8_t byte : digest) {
    hex += kDigits[byte >> 4U];
    hex += kDigits[byte & 15U];
  }
  return hex;
}

std::string Sha256LibraryVersion() {
  return std::to_string(nettle_version_major()) + '.' + std::to_string(nettle_version_minor());
}

}  // namespace varnlog::platform
