#include "logview/MeasuredValue.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "platform/Ascii.h"

namespace varnlog::logview {

namespace {

constexpr std::size_t kExactDigits = 15;
constexpr std::size_t kDigitsOfThousands = 3;

bool AreDigits(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, platform::ascii::IsDigit);
}

}  // namespace

std::optional<MeasuredValue> ReadMeasured(std::string_view text) {
  const auto separator = std::min(text.find_first_of(".,"), text.size());
  const std::string_view whole = text.substr(0, separator);
  if (!AreDigits(whole) || (whole.size() > 1 && whole.front() == '0')) return std::nullopt;
  std::string number(whole);
  MeasuredValue read;
  if (separator < text.size()) {
    const std::string_view decimals = text.substr(separator + 1);
    if (!AreDigits(decimals)) return std::nullopt;
    const bool isComma = text[separator] == ',';
    if (isComma && decimals.size() == kDigitsOfThousands && whole != "0") return std::nullopt;
    read.decimals = static_cast<int>(decimals.size());
    number.append(1, '.').append(decimals);
  }
  if (number.size() > kExactDigits) return std::nullopt;
  std::from_chars(number.data(), number.data() + number.size(), read.value);
  return read;
}

}  // namespace varnlog::logview
