#pragma once

#include <algorithm>
#include <string_view>

/// The letters, digits and blanks of ASCII, the same in every locale. No other character is one of them.
namespace varnlog::platform::ascii {

[[nodiscard]] constexpr bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

[[nodiscard]] constexpr bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Tabs and line breaks are blanks, too.
[[nodiscard]] constexpr bool IsBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

[[nodiscard]] constexpr char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

[[nodiscard]] constexpr char Upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// Whether two texts are the same but for the case of these letters.
[[nodiscard]] constexpr bool SameLetters(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, Lower, Lower);
}

}  // namespace varnlog::platform::ascii
