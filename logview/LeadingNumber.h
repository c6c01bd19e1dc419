#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>

namespace varnlog::logview {

/// The decimal number that `text` begins with, read up to the first character that is not a digit and never
/// beyond `most`, however many digits there are. Nothing when there is no digit.
[[nodiscard]] constexpr std::optional<std::int32_t> LeadingNumber(std::string_view text, std::int32_t most) {
  std::optional<std::int32_t> number;
  for (const char c : text) {
    if (c < '0' || c > '9') break;
    const std::int64_t longer = std::int64_t{number.value_or(0)} * 10 + (c - '0');
    number = static_cast<std::int32_t>(std::min<std::int64_t>(longer, most));
  }
  return number;
}

}  // namespace varnlog::logview
