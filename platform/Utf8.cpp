#include <cstdint>
#include <cstring>

#include "platform/CodePage.h"

namespace varnlog::platform {
namespace {

bool IsContinuation(unsigned char byte) {
  return (byte & 0xC0U) == 0x80U;
}

/// Bytes of the sequence that a lead byte announces and the range its second byte must lie in, which keeps
/// out overlong forms, surrogates and what lies beyond U+10FFFF. Length 0 for a byte that leads nothing.
struct Lead {
  std::size_t length;
  unsigned char secondLow;
  unsigned char secondHigh;
};

Lead LeadOf(unsigned char byte) {
  if (byte < 0x80) return {1, 0, 0};
  if (byte >= 0xC2 && byte <= 0xDF) return {2, 0x80, 0xBF};
  if (byte == 0xE0) return {3, 0xA0, 0xBF};
  if (byte == 0xED) return {3, 0x80, 0x9F};
  if (byte >= 0xE1 && byte <= 0xEF) return {3, 0x80, 0xBF};
  if (byte == 0xF0) return {4, 0x90, 0xBF};
  if (byte >= 0xF1 && byte <= 0xF3) return {4, 0x80, 0xBF};
  if (byte == 0xF4) return {4, 0x80, 0x8F};
  return {0, 0, 0};
}

/// The length of the well-formed sequence at the start of `text` (which is not empty), 0 for a malformed one.
std::size_t SequenceLength(std::string_view text) {
  const Lead lead = LeadOf(static_cast<unsigned char>(text[0]));
  if (lead.length <= 1 || lead.length > text.size()) return lead.length == 1 ? 1 : 0;
  const auto second = static_cast<unsigned char>(text[1]);
  if (second < lead.secondLow || second > lead.secondHigh) return 0;
  for (std::size_t i = 2; i < lead.length; ++i) {
    if (!IsContinuation(static_cast<unsigned char>(text[i]))) return 0;
  }
  return lead.length;
}

}  // namespace

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
    const std::size_t length = SequenceLength(bytes);
    if (length == 0) return false;
    bytes.remove_prefix(length);
  }
}

std::optional<char32_t> NextCharacter(std::string_view& text) {
  const std::size_t length = SequenceLength(text);
  const auto lead = static_cast<unsigned char>(text[0]);
  if (length <= 1) {
    text.remove_prefix(1);
    return length == 1 ? std::optional<char32_t>(lead) : std::nullopt;
  }
  char32_t character = lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    character = (character << 6U) | (static_cast<unsigned char>(text[i]) & 0x3FU);
  }
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
