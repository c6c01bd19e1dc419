#include <algorithm>

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "platform/CodePage.h"
#include "platform/Terminal.h"

namespace varnlog::platform {

namespace {

std::size_t WidthOf(UChar32 character) {
  const auto mask = U_MASK(u_charType(character));
  if ((mask & (U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK)) != 0) return 0;
  const auto width = static_cast<UEastAsianWidth>(u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH));
  return width == U_EA_FULLWIDTH || width == U_EA_WIDE ? 2 : 1;
}

bool IsControl(char32_t character) {
  constexpr char32_t kFirstPrintable = 0x20;
  constexpr char32_t kDelete = 0x7F;
  constexpr char32_t kLastEightBitControl = 0x9F;
  if (character < kFirstPrintable) return true;
  if (character >= kDelete && character <= kLastEightBitControl) return true;
  return u_hasBinaryProperty(static_cast<UChar32>(character), UCHAR_BIDI_CONTROL) != 0 ||
         character == U'\u2028' || character == U'\u2029';
}

}  // namespace

std::string PrintableText(std::string_view text, std::string_view kept) {
  const auto isPlain = [](char c) { return c >= ' ' && c < '\x7F'; };
  if (std::all_of(text.begin(), text.end(), isPlain)) return std::string(text);
  std::string printable;
  printable.reserve(text.size());
  while (!text.empty()) {
    const std::string_view before = text;
    const auto character = NextCharacter(text);
    const bool isKept = kept.find(before.front()) != std::string_view::npos;
    if (!isKept && (!character || IsControl(*character))) {
      printable += ' ';
    } else {
      printable.append(before.substr(0, before.size() - text.size()));
    }
  }
  return printable;
}

std::size_t DisplayWidth(std::string_view text) {
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  if (std::all_of(text.begin(), text.end(), isAscii)) return text.size();
  const auto characters = icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
  std::size_t width = 0;
  for (std::int32_t at = 0; at < characters.length(); at = characters.moveIndex32(at, 1)) {
    width += WidthOf(characters.char32At(at));
  }
  return width;
}

}  // namespace varnlog::platform
