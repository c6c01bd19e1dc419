#include "platform/DateTime.h"

#include <chrono>

#include "platform/Ascii.h"

namespace varnlog::platform {
namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr int kFirstYear = 100;
constexpr int kLastYear = 9999;
struct Civil {
  std::int64_t year;
  int month;
  int day;
};

constexpr std::int64_t FloorDiv(std::int64_t value, std::int64_t divisor) {
  return value / divisor - (value % divisor < 0 ? 1 : 0);
}

constexpr std::chrono::sys_days kEpoch = std::chrono::December / 30 / 1899;
// The calendar repeats exactly; its own types reach no further than some ten thousand years.
constexpr int kYearsOfCycle = 400;
constexpr std::int64_t kDaysOfCycle = 146097;

constexpr std::int64_t DaysFromCivil(std::int64_t year, int month, std::int64_t day) {
  const std::int64_t cycles = FloorDiv(year, kYearsOfCycle);
  const auto yearOfCycle = static_cast<int>(year - cycles * kYearsOfCycle);
  const std::chrono::sys_days first =
      std::chrono::year(yearOfCycle) / std::chrono::month(static_cast<unsigned>(month)) / 1;
  return cycles * kDaysOfCycle + (first - kEpoch).count() + day - 1;
}

constexpr Civil CivilFromDays(std::int64_t days) {
  const std::int64_t cycles = FloorDiv(days, kDaysOfCycle);
  const std::chrono::year_month_day date =
      kEpoch + std::chrono::days(static_cast<int>(days - cycles * kDaysOfCycle));
  return {static_cast<int>(date.year()) + cycles * kYearsOfCycle,
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day()))};
}

constexpr bool IsDate(int year, int month, int day) {
  if (year < kFirstYear || year > kLastYear || month < 1 || day < 1 || day > 31) return false;
  return std::chrono::year_month_day(std::chrono::year(year),
                                     std::chrono::month(static_cast<unsigned>(month)),
                                     std::chrono::day(static_cast<unsigned>(day)))
      .ok();
}

std::int64_t DayNumber(std::int64_t seconds) {
  return FloorDiv(seconds, kSecondsPerDay);
}

int SecondOfDay(std::int64_t seconds) {
  return static_cast<int>(seconds - DayNumber(seconds) * kSecondsPerDay);
}

void WriteTwo(char* out, int value) {
  out[0] = static_cast<char>('0' + value / 10);
  out[1] = static_cast<char>('0' + value % 10);
}

/// The number that `count` digits form, or -1.
int Digits(std::string_view text, std::size_t start, std::size_t count) {
  int value = 0;
  for (const char c : text.substr(start, count)) {
    if (!ascii::IsDigit(c)) return -1;
    value = value * 10 + (c - '0');
  }
  return value;
}

}  // namespace

std::optional<DateTime> DateTime::FromCivil(int year, int month, int day, int hour, int minute, int second) {
  if (month > 12 || !IsDate(year, month, day)) return std::nullopt;
  if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59) return std::nullopt;
  return DateTime(DaysFromCivil(year, month, day) * kSecondsPerDay + hour * 3600 + minute * 60 + second);
}

DateTime DateTime::FromSerial(int year, int month, int day) {
  const std::int64_t monthIndex = static_cast<std::int64_t>(month) - 1;
  const std::int64_t yearsOver = FloorDiv(monthIndex, 12);
  const auto monthOfYear = static_cast<int>(monthIndex - yearsOver * 12) + 1;
  const std::int64_t days = DaysFromCivil(year + yearsOver, monthOfYear, day);
  const std::int64_t resultYear = CivilFromDays(days).year;
  if (resultYear < kFirstYear || resultYear > kLastYear) return {};
  return DateTime(days * kSecondsPerDay);
}

std::optional<DateTime> DateTime::FromIso(std::string_view text) {
  if (text.size() != 10 && text.size() != 19) return std::nullopt;
  if (text[4] != '-' || text[7] != '-') return std::nullopt;
  int hour = 0;
  int minute = 0;
  int second = 0;
  if (text.size() == 19) {
    if (text[10] != ' ' || text[13] != ':' || text[16] != ':') return std::nullopt;
    hour = Digits(text, 11, 2);
    minute = Digits(text, 14, 2);
    second = Digits(text, 17, 2);
  }
  return FromCivil(Digits(text, 0, 4), Digits(text, 5, 2), Digits(text, 8, 2), hour, minute, second);
}

int DateTime::Year() const {
  return static_cast<int>(CivilFromDays(DayNumber(seconds_)).year);
}
int DateTime::Month() const {
  return CivilFromDays(DayNumber(seconds_)).month;
}
int DateTime::Day() const {
  return CivilFromDays(DayNumber(seconds_)).day;
}
int DateTime::Hour() const {
  return SecondOfDay(seconds_) / 3600;
}
int DateTime::Minute() const {
  return SecondOfDay(seconds_) / 60 % 60;
}
int DateTime::Second() const {
  return SecondOfDay(seconds_) % 60;
}

DateTime DateTime::DatePart() const {
  return DateTime(seconds_ - SecondOfDay(seconds_));
}

DateTime DateTime::AtTimeOf(DateTime time) const {
  return DateTime(DatePart().seconds_ + SecondOfDay(time.seconds_));
}

std::string DateTime::ToIso() const {
  std::string text(19, ' ');
  WriteIso(text.data());
  return text;
}

void DateTime::WriteIso(char* out) const {
  const Civil civil = CivilFromDays(DayNumber(seconds_));
  const int clock = SecondOfDay(seconds_);
  const auto year = static_cast<int>(civil.year);
  WriteTwo(out, year / 100);
  WriteTwo(out + 2, year % 100);
  out[4] = '-';
  WriteTwo(out + 5, civil.month);
  out[7] = '-';
  WriteTwo(out + 8, civil.day);
  out[10] = ' ';
  WriteTwo(out + 11, clock / 3600);
  out[13] = ':';
  WriteTwo(out + 14, clock / 60 % 60);
  out[16] = ':';
  WriteTwo(out + 17, clock % 60);
}

}  // namespace varnlog::platform
