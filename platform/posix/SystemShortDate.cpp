#include <array>
#include <memory>

#include <unicode/udat.h>

#include "platform/ShortDate.h"
#include "platform/posix/SystemLocale.h"

namespace varnlog::platform {
namespace {

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
  const std::string locale = SystemLocale("LC_TIME");
  return locale.empty() ? ShortDate() : FromPattern(PatternOf(locale));
}

}  // namespace varnlog::platform
