#include <algorithm>

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "platform/Terminal.h"

namespace varnlog::platform {

namespace {

std::size_t WidthOf(UChar32 character) {
  const auto mask = U_MASK(u_charType(character));
  if ((mask & (U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK)) != 0) return 0;
  const auto width = static_cast<UEastAsianWidth>(u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH));
  return width == U_EA_FULLWIDTH || width == U_EA_WIDE ? 2 : 1;
}

}  // namespace

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
