#include "platform/DateTime.h"

#include <array>

namespace varnlog::platform {
namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr int kFirstYear = 100;
constexpr int kLastYear = 9999;
// From 0000-03-01, where the day count below begins, to 1899-12-30.
constexpr std::int64_t kEpochDay = 693899;

struct Civil {
  std::int64_t year;
  int month;
  int day;
};

constexpr std::int64_t FloorDiv(std::int64_t value, std::int64_t divisor) {
  return value / divisor - (value % divisor < 0 ? 1 : 0);
}

// The year is taken to begin in March, so that the leap day is its last and needs no case of its own; 400
// years repeat exactly.
constexpr std::int64_t DaysFromCivil(std::int64_t year, int month, std::int64_t day) {
  if (month <= 2) --year;
  const std::int64_t era = FloorDiv(year, 400);
  const std::int64_t yearOfEra = year - era * 400;
  const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + dayOfEra - kEpochDay;
}

constexpr Civil CivilFromDays(std::int64_t days) {
  days += kEpochDay;
  const std::int64_t era = FloorDiv(days, 146097);
  const std::int64_t dayOfEra = days - era * 146097;
  const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const auto shiftedMonth = static_cast<int>((5 * dayOfYear + 2) / 153);
  const auto day = static_cast<int>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
  const int month = shiftedMonth + (shiftedMonth < 10 ? 3 : -9);
  return {yearOfEra + era * 400 + (month <= 2 ? 1 : 0), month, day};
}

static_assert(DaysFromCivil(1899, 12, 30) == 0);
static_assert(DaysFromCivil(1900, 3, 1) == 61);
static_assert(CivilFromDays(0).year == 1899 && CivilFromDays(0).month == 12 && CivilFromDays(0).day == 30);

constexpr int DaysInMonth(int year, int month) {
  constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return month == 2 && leap ? 29 : kDays[static_cast<std::size_t>(month - 1)];
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
    if (c < '0' || c > '9') return -1;
    value = value * 10 + (c - '0');
  }
  return value;
}

}  // namespace

std::optional<DateTime> DateTime::FromCivil(int year, int month, int day, int hour, int minute, int second) {
  if (year < kFirstYear || year > kLastYear || month < 1 || month > 12) return std::nullopt;
  if (day < 1 || day > DaysInMonth(year, month)) return std::nullopt;
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
