#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include <unicode/utf8.h>

/// Single steps over UTF-8 for inner loops. What whole texts need is in platform/CodePage.h.
namespace varnlog::platform {

inline constexpr std::size_t kMostUtf8Bytes = 4;

/// The character at `position`, which is before the end of the text, and behind it the position. Nothing for
/// a malformed byte, which is stepped over alone.
[[nodiscard]] inline std::optional<char32_t> DecodeUtf8(std::string_view text, std::size_t& position) {
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  std::size_t next = position;
  UChar32 character = 0;
  U8_NEXT(bytes, next, text.size(), character);
  if (character < 0) {
    ++position;
    return std::nullopt;
  }
  position = next;
  return static_cast<char32_t>(character);
}

/// Writes a Unicode scalar value to `out`, which has room for kMostUtf8Bytes, and returns how many bytes it
/// has.
[[nodiscard]] inline std::size_t EncodeUtf8(char32_t character, char* out) {
  auto* const bytes = reinterpret_cast<std::uint8_t*>(out);
  std::size_t length = 0;
  U8_APPEND_UNSAFE(bytes, length, static_cast<UChar32>(character));
  return length;
}

}  // namespace varnlog::platform
