#include "platform/ShortDate.h"

#include <array>

#include "platform/Ascii.h"

namespace varnlog::platform {
namespace {

using ascii::IsDigit;

bool IsSeparator(char c) {
  return c == '.' || c == '/' || c == '-';
}

std::string_view TrimBlanks(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

/// A run of digits with its value; at most four are taken, so that the value cannot overflow.
struct Number {
  int value = 0;
  std::size_t digits = 0;
};

Number TakeNumber(std::string_view& text) {
  Number number;
  while (!text.empty() && IsDigit(text.front()) && number.digits < 4) {
    number.value = number.value * 10 + (text.front() - '0');
    ++number.digits;
    text.remove_prefix(1);
  }
  return number;
}

bool TakeCharacter(std::string_view& text, char expected) {
  if (text.empty() || text.front() != expected) return false;
  text.remove_prefix(1);
  return true;
}

/// Three numbers with the same separator between them, taken off the start of `text`.
std::optional<std::array<Number, 3>> TakeDateNumbers(std::string_view& text) {
  std::array<Number, 3> numbers{};
  numbers[0] = TakeNumber(text);
  if (text.empty() || !IsSeparator(text.front())) return std::nullopt;
  const char separator = text.front();
  for (std::size_t i = 1; i < numbers.size(); ++i) {
    if (!TakeCharacter(text, separator)) return std::nullopt;
    numbers[i] = TakeNumber(text);
  }
  return numbers;
}

std::optional<int> YearOf(Number number) {
  if (number.digits == 4) return number.value;
  if (number.digits != 2) return std::nullopt;
  return number.value + (number.value >= 30 ? 1900 : 2000);
}

bool IsDayOrMonth(Number number) {
  return number.digits == 1 || number.digits == 2;
}

/// hh:mm or hh:mm:ss as hour, minute, second; nothing for any other text.
std::optional<std::array<int, 3>> ParseTime(std::string_view text) {
  std::array<int, 3> parts{};
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i == 2 && text.empty()) break;
    if (i > 0 && !TakeCharacter(text, ':')) return std::nullopt;
    const Number number = TakeNumber(text);
    if (!IsDayOrMonth(number)) return std::nullopt;
    parts[i] = number.value;
  }
  if (!text.empty()) return std::nullopt;
  return parts;
}

void AppendNumber(int value, std::size_t width, std::string& out) {
  std::array<char, 12> digits{};
  std::size_t first = digits.size();
  for (int left = value; left > 0 || digits.size() - first < width; left /= 10) {
    digits[--first] = static_cast<char>('0' + left % 10);
  }
  out.append(digits.data() + first, digits.size() - first);
}

std::optional<ShortDate::Order> OrderOf(std::string_view letters) {
  if (letters == "yMd") return ShortDate::Order::kYearMonthDay;
  if (letters == "dMy") return ShortDate::Order::kDayMonthYear;
  if (letters == "Mdy") return ShortDate::Order::kMonthDayYear;
  return std::nullopt;
}

}  // namespace

ShortDate ShortDate::FromPattern(std::string_view pattern) {
  std::string letters;
  char separator = 0;
  bool padded = false;
  bool quoted = false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const char c = pattern[i];
    if (c == '\'') quoted = !quoted;
    if (quoted) continue;
    if (c == 'd' || c == 'M' || c == 'y') {
      const bool repeated = !letters.empty() && letters.back() == c;
      if (!repeated) letters.push_back(c);
      if (repeated && c == 'd') padded = true;
    } else if (separator == 0 && !letters.empty() && IsSeparator(c)) {
      separator = c;
    }
  }
  const std::optional<Order> order = OrderOf(letters);
  if (!order || separator == 0) return {};
  return {*order, separator, padded};
}

std::string ShortDate::Format(DateTime date) const {
  if (!date.IsSet()) return {};
  const std::size_t width = padded_ ? 2 : 1;
  const auto day = [&](std::string& out) { AppendNumber(date.Day(), width, out); };
  const auto month = [&](std::string& out) { AppendNumber(date.Month(), width, out); };
  const auto year = [&](std::string& out) { AppendNumber(date.Year(), 4, out); };
  std::string text;
  const auto join = [&](const auto& first, const auto& second, const auto& third) {
    first(text);
    text += separator_;
    second(text);
    text += separator_;
    third(text);
  };
  switch (order_) {
    case Order::kYearMonthDay:
      join(year, month, day);
      break;
    case Order::kDayMonthYear:
      join(day, month, year);
      break;
    case Order::kMonthDayYear:
      join(month, day, year);
      break;
  }
  return text;
}

std::string ShortDate::FormatGeneral(DateTime dateTime) const {
  std::string text = Format(dateTime);
  if (text.empty() || dateTime == dateTime.DatePart()) return text;
  return text + ' ' + dateTime.ToIso().substr(11);
}

std::optional<DateTime> ShortDate::Parse(std::string_view text) const {
  text = TrimBlanks(text);
  const auto numbers = TakeDateNumbers(text);
  if (!numbers) return std::nullopt;
  // A year that stands first with all its digits cannot be a day, whatever the order of this form.
  const Order order = (*numbers)[0].digits == 4 ? Order::kYearMonthDay : order_;
  const std::size_t yearAt = order == Order::kYearMonthDay ? 0 : 2;
  const std::size_t monthAt = order == Order::kMonthDayYear ? 0 : 1;
  const Number month = (*numbers)[monthAt];
  const Number day = (*numbers)[3 - yearAt - monthAt];
  const std::optional<int> year = YearOf((*numbers)[yearAt]);
  if (!year || !IsDayOrMonth(month) || !IsDayOrMonth(day)) return std::nullopt;

  std::array<int, 3> time{};
  if (!text.empty()) {
    if (text.front() != ' ') return std::nullopt;
    const auto parsed = ParseTime(TrimBlanks(text));
    if (!parsed) return std::nullopt;
    time = *parsed;
  }
  return DateTime::FromCivil(*year, month.value, day.value, time[0], time[1], time[2]);
}

}  // namespace varnlog::platform
