#include <array>
#include <cstdlib>
#include <memory>

#include <unicode/udat.h>
#include <unicode/uloc.h>

#include "platform/ShortDate.h"

namespace varnlog::platform {
namespace {

/// The first of the variables that is set, as the system's own library looks them up.
std::string LocaleName() {
  for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  return {};
}

/// "de_DE.UTF-8@euro" without the code set and the variant, which say nothing about dates.
std::string LanguageAndCountry(const std::string& name) {
  return name.substr(0, name.find_first_of(".@"));
}

bool IsKnown(const std::string& locale) {
  std::array<char, ULOC_LANG_CAPACITY> language{};
  UErrorCode error = U_ZERO_ERROR;
  uloc_getLanguage(locale.c_str(), language.data(), static_cast<int32_t>(language.size()), &error);
  if (U_FAILURE(error) != 0 || language[0] == '\0') return false;
  for (int32_t i = 0; i < uloc_countAvailable(); ++i) {
    if (std::string_view(uloc_getAvailable(i)) == language.data()) return true;
  }
  return false;
}

struct FormatCloser {
  void operator()(UDateFormat* format) const { udat_close(format); }
};

/// The short date pattern of a locale; "" when there is none.
std::string PatternOf(const std::string& locale) {
  UErrorCode error = U_ZERO_ERROR;
  // Dates here are Gregorian whatever calendar the locale prefers.
  const std::string gregorian = locale + "@calendar=gregorian";
  const std::unique_ptr<UDateFormat, FormatCloser> format(
      udat_open(UDAT_NONE, UDAT_SHORT, gregorian.c_str(), nullptr, 0, nullptr, 0, &error));
  if (U_FAILURE(error) != 0) return {};
  std::array<UChar, 64> pattern{};
  const int32_t length =
      udat_toPattern(format.get(), 0, pattern.data(), static_cast<int32_t>(pattern.size()), &error);
  if (U_FAILURE(error) != 0) return {};
  std::string text;
  for (int32_t i = 0; i < length; ++i) {
    const UChar c = pattern[static_cast<std::size_t>(i)];
    text.push_back(c < 0x80 ? static_cast<char>(c) : ' ');
  }
  return text;
}

}  // namespace

ShortDate ShortDate::FromSystem() {
  const std::string locale = LanguageAndCountry(LocaleName());
  if (locale.empty() || locale == "C" || locale == "POSIX" || !IsKnown(locale)) return {};
  return FromPattern(PatternOf(locale));
}

}  // namespace varnlog::platform
