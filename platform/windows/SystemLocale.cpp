#include <array>
#include <string>

#include "platform/ListSeparator.h"
#include "platform/Paper.h"
#include "platform/ShortDate.h"
#include "platform/windows/System.h"

namespace varnlog::platform {
namespace {

/// What the user has set in the system's regional settings.
std::wstring Setting(LCTYPE kind) {
  std::array<wchar_t, 128> text{};
  const int length =
      GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, kind, text.data(), static_cast<int>(text.size()));
  return length > 0 ? std::wstring(text.data()) : std::wstring();
}

}  // namespace

ShortDate ShortDate::FromSystem() {
  std::string pattern;
  for (const wchar_t c : Setting(LOCALE_SSHORTDATE)) pattern.push_back(c < 0x80 ? static_cast<char>(c) : ' ');
  return FromPattern(pattern);
}

Paper SystemPaper() {
  const std::wstring paper = Setting(LOCALE_IPAPERSIZE);
  // Letter, and Legal, which is printed where Letter is.
  return paper == L"1" || paper == L"5" ? Paper::kLetter : Paper::kA4;
}

char ListSeparator() {
  const std::wstring separator = Setting(LOCALE_SLIST);
  if (separator == L";" || separator == L",") return static_cast<char>(separator.front());
  return Setting(LOCALE_SDECIMAL) == L"," ? ';' : ',';
}

}  // namespace varnlog::platform
