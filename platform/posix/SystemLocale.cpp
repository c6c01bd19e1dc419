#include "platform/posix/SystemLocale.h"

#include <array>
#include <cstdlib>
#include <string_view>

#include <unicode/uloc.h>

namespace varnlog::platform {
namespace {

std::string FirstSet(const char* category) {
  for (const char* variable : {"LC_ALL", category, "LANG"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  return {};
}

/// "de_DE.UTF-8@euro" without the code set and the variant, which say nothing about dates or paper.
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

}  // namespace

std::string SystemLocale(const char* category) {
  std::string locale = LanguageAndCountry(FirstSet(category));
  if (locale == "C" || locale == "POSIX" || !IsKnown(locale)) return {};
  return locale;
}

}  // namespace varnlog::platform
