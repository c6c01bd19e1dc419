#include "platform/Sha256.h"

#include <cstdint>
#include <nettle/pbkdf2.h>
#include <nettle/sha2.h>
#include <nettle/version.h>
#include <new>

namespace varnlog::platform {

namespace {

using Digest = std::array<std::uint8_t, SHA256_DIGEST_SIZE>;

const std::uint8_t* Bytes(std::string_view text) {
  return reinterpret_cast<const std::uint8_t*>(text.data());
}

std::string HexOf(const Digest& digest) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string hex;
  for (const std::uint8_t byte : digest) {
    hex += kDigits[byte >> 4U];
    hex += kDigits[byte & 15U];
  }
  return hex;
}

sha256_ctx& Context(std::array<std::byte, 128>& state) {
  static_assert(sizeof(sha256_ctx) <= sizeof state && alignof(sha256_ctx) <= 8);
  return *std::launder(reinterpret_cast<sha256_ctx*>(state.data()));
}

}  // namespace

Sha256::Sha256() {
  sha256_init(new (state_.data()) sha256_ctx);
}

void Sha256::Add(std::string_view bytes) {
  sha256_update(&Context(state_), bytes.size(), Bytes(bytes));
}

std::string Sha256::Hex() {
  Digest digest{};
  sha256_digest(&Context(state_), digest.size(), digest.data());
  return HexOf(digest);
}

std::string Sha256Hex(std::string_view bytes) {
  Sha256 digest;
  digest.Add(bytes);
  return digest.Hex();
}

std::string PasswordDigest(std::string_view password, std::string_view salt, unsigned rounds) {
  Digest digest{};
  pbkdf2_hmac_sha256(password.size(), Bytes(password), rounds, salt.size(), Bytes(salt), digest.size(),
                     digest.data());
  return HexOf(digest);
}

std::string Sha256LibraryVersion() {
  return std::to_string(nettle_version_major()) + '.' + std::to_string(nettle_version_minor());
}

}  // namespace varnlog::platform
