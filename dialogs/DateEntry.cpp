#include "dialogs/DateEntry.h"

#include <algorithm>
#include <string>

#include "platform/Ascii.h"
#include "platform/CodePage.h"

namespace varnlog::dialogs {

using core::literals::operator""_key;
using platform::DateTime;
using platform::ShortDate;

namespace {

/// "01112026" and "011126" with separators, so that they are read like any other date.
std::string Separated(std::string_view digits, const ShortDate& shortDate) {
  const bool yearFirst = shortDate.order() == ShortDate::Order::kYearMonthDay;
  const std::size_t yearDigits = digits.size() - 4;
  const std::size_t first = yearFirst ? yearDigits : 2;
  std::string text(digits.substr(0, first));
  text.append(1, '.').append(digits.substr(first, 2)).append(1, '.').append(digits.substr(first + 2));
  return text;
}

/// "1.11." and "1.11" with this year.
std::string WithYear(std::string_view text, const ShortDate& shortDate, DateTime today) {
  const std::string year = std::to_string(today.Year());
  const char separator = *std::ranges::find_if_not(text, platform::ascii::IsDigit);
  while (text.ends_with(separator)) text.remove_suffix(1);
  if (shortDate.order() == ShortDate::Order::kYearMonthDay) return year + separator + std::string(text);
  return std::string(text) + separator + year;
}

bool IsWord(std::string_view text, core::TextKey word, const core::TextLookup& texts) {
  return platform::UpperCase(text) == platform::UpperCase(texts.GetText(word));
}

}  // namespace

std::optional<DateTime> ReadDateEntry(std::string_view text, const ShortDate& shortDate, DateTime today,
                                      const core::TextLookup& texts) {
  if (const auto date = shortDate.Parse(text)) return date;
  if (text.empty()) return std::nullopt;
  if (IsWord(text, "BE_WORDTODAY"_key, texts)) return today;
  if (IsWord(text, "BE_WORDYESTERDAY"_key, texts)) {
    return DateTime::FromSerial(today.Year(), today.Month(), today.Day() - 1);
  }
  if (!std::ranges::all_of(text, platform::ascii::IsDigit)) {
    const bool begins = platform::ascii::IsDigit(text.front());
    return begins ? shortDate.Parse(WithYear(text, shortDate, today)) : std::nullopt;
  }
  if (text.size() != 6 && text.size() != 8) return std::nullopt;
  return shortDate.Parse(Separated(text, shortDate));
}

}  // namespace varnlog::dialogs
