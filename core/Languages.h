#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace varnlog::core {

/// A language of the program.
struct LanguageName {
  std::string_view code;  // in the INI file and the language database
  std::string_view name;  // in itself
  std::string_view tag;   // of RFC 5646, as documents and the system's own texts have it
};

/// The first is spoken where nothing else is known.
inline constexpr std::array<LanguageName, 7> kLanguages = {{{"D", "Deutsch", "de"},
                                                            {"GB", "English", "en"},
                                                            {"E", "Español", "es"},
                                                            {"I", "Italiano", "it"},
                                                            {"F", "Français", "fr"},
                                                            {"NL", "Nederlands", "nl"},
                                                            {"CYR", "Русский", "ru"}}};

/// The one of this code, letter case counts; null for any other.
[[nodiscard]] constexpr const LanguageName* FindLanguage(std::string_view code) {
  const auto* const found = std::ranges::find(kLanguages, code, &LanguageName::code);
  return found == kLanguages.end() ? nullptr : found;
}

/// The tag of this code, that of the first language for any other.
[[nodiscard]] constexpr std::string_view LanguageTag(std::string_view code) {
  const LanguageName* const found = FindLanguage(code);
  return found == nullptr ? kLanguages.front().tag : found->tag;
}

}  // namespace varnlog::core
