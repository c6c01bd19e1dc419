#include "db/dao/SearchForm.h"

#include <algorithm>
#include <array>
#include <utility>

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "db/dao/EngineError.h"
#include "db/dao/text/Collation.h"

namespace varnlog::dao {

namespace {

/// Letters whose stroke or other half is no accent to Unicode.
constexpr std::array<std::pair<UChar32, const char*>, 8> kLetters = {{{U'ø', "o"},
                                                                      {U'đ', "d"},
                                                                      {U'ð', "d"},
                                                                      {U'ł', "l"},
                                                                      {U'ħ', "h"},
                                                                      {U'ı', "i"},
                                                                      {U'æ', "ae"},
                                                                      {U'œ', "oe"}}};

void AppendBare(UChar32 letter, icu::UnicodeString& out) {
  if (u_charType(letter) == U_NON_SPACING_MARK) return;
  const auto* const found =
      std::ranges::find_if(kLetters, [letter](const auto& row) { return row.first == letter; });
  if (found == kLetters.end()) {
    out.append(letter);
  } else {
    out.append(icu::UnicodeString::fromUTF8(found->second));
  }
}

std::string WithoutAccents(const std::string& folded) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* const apart = icu::Normalizer2::getNFDInstance(status);
  if (U_FAILURE(status) != 0) throw EngineError(ErrorNumber::kUnexpected, u_errorName(status));
  const icu::UnicodeString letters = apart->normalize(icu::UnicodeString::fromUTF8(folded), status);
  icu::UnicodeString bare;
  for (std::int32_t at = 0; at < letters.length(); at = letters.moveIndex32(at, 1)) {
    AppendBare(letters.char32At(at), bare);
  }
  std::string text;
  bare.toUTF8String(text);
  return text;
}

}  // namespace

std::string SearchForm(std::string_view text, bool accentsMatter) {
  std::string folded = FoldCase(text);
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  if (accentsMatter || std::ranges::all_of(folded, isAscii)) return folded;
  return WithoutAccents(folded);
}

}  // namespace varnlog::dao
