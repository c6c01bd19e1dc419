#include "platform/Utf8.h"

#include <cstdint>
#include <cstring>

#include "platform/CodePage.h"

namespace varnlog::platform {
std::size_t AsciiPrefix(std::string_view bytes) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080U;
  std::size_t i = 0;
  for (; i + sizeof(std::uint64_t) <= bytes.size(); i += sizeof(std::uint64_t)) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data() + i, sizeof word);
    if ((word & kHighBits) != 0) break;
  }
  while (i < bytes.size() && static_cast<unsigned char>(bytes[i]) < 0x80) ++i;
  return i;
}

bool IsUtf8(std::string_view bytes) {
  for (;;) {
    bytes.remove_prefix(AsciiPrefix(bytes));
    if (bytes.empty()) return true;
    std::size_t length = 0;
    if (!DecodeUtf8(bytes, length)) return false;
    bytes.remove_prefix(length);
  }
}

std::optional<char32_t> NextCharacter(std::string_view& text) {
  std::size_t length = 0;
  const auto character = DecodeUtf8(text, length);
  text.remove_prefix(length);
  return character;
}

std::size_t CharacterCount(std::string_view text) {
  std::size_t count = 0;
  for (;;) {
    const std::size_t ascii = AsciiPrefix(text);
    count += ascii;
    text.remove_prefix(ascii);
    if (text.empty()) return count;
    static_cast<void>(NextCharacter(text));
    ++count;
  }
}

std::string_view FirstCharacters(std::string_view text, std::size_t characters) {
  // No character is shorter than a byte, so most texts need no counting.
  if (text.size() <= characters) return text;
  std::string_view rest = text;
  for (std::size_t i = 0; i < characters && !rest.empty(); ++i) static_cast<void>(NextCharacter(rest));
  return text.substr(0, text.size() - rest.size());
}

std::string DecodeTextFile(std::string_view bytes, const CodePage& fallback) {
  if (bytes.starts_with(kByteOrderMark)) bytes.remove_prefix(kByteOrderMark.size());
  return IsUtf8(bytes) ? std::string(bytes) : fallback.ToUtf8(bytes);
}

}  // namespace varnlog::platform
