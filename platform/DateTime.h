#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace varnlog::platform {

/// A point in local civil time with second resolution, years 100 to 9999 of the proleptic Gregorian
/// calendar. The default value is "not set"; it stands for the day and time zero of the engine whose dates
/// these are (1899-12-30 00:00:00), so that moment itself cannot be told from an unset one.
class DateTime {
 public:
  constexpr DateTime() = default;

  /// Nothing when the date is not in the calendar (30.2.) or the time is not on the clock (24:00).
  [[nodiscard]] static std::optional<DateTime> FromCivil(int year, int month, int day, int hour = 0,
                                                         int minute = 0, int second = 0);

  /// Calendar arithmetic on whatever is given: day 31 of February 2001 is 3 March 2001, month 13 is January
  /// of the next year. Not set when the result leaves the supported years.
  [[nodiscard]] static DateTime FromSerial(int year, int month, int day);

  /// Reads "YYYY-MM-DD" or "YYYY-MM-DD hh:mm:ss", nothing else.
  [[nodiscard]] static std::optional<DateTime> FromIso(std::string_view text);

  /// The inverse of SecondsSinceEpoch().
  [[nodiscard]] static constexpr DateTime FromSeconds(std::int64_t seconds) { return DateTime(seconds); }

  /// Seconds since 1899-12-30 00:00:00; negative before it, 0 when not set.
  [[nodiscard]] constexpr std::int64_t SecondsSinceEpoch() const { return seconds_; }

  [[nodiscard]] constexpr bool IsSet() const { return seconds_ != 0; }

  [[nodiscard]] int Year() const;
  [[nodiscard]] int Month() const;   // 1 to 12
  [[nodiscard]] int Day() const;     // 1 to 31
  [[nodiscard]] int Hour() const;    // 0 to 23
  [[nodiscard]] int Minute() const;  // 0 to 59
  [[nodiscard]] int Second() const;  // 0 to 59

  /// The same day at 00:00:00.
  [[nodiscard]] DateTime DatePart() const;

  /// This date at the clock time of `time` (whose own date is ignored).
  [[nodiscard]] DateTime AtTimeOf(DateTime time) const;

  /// "YYYY-MM-DD hh:mm:ss", always 19 characters; the form in which dates are stored.
  [[nodiscard]] std::string ToIso() const;

  /// Writes the 19 characters of ToIso() to `out`, without a terminating zero.
  void WriteIso(char* out) const;

  friend constexpr auto operator<=>(DateTime, DateTime) = default;

 private:
  constexpr explicit DateTime(std::int64_t seconds) : seconds_(seconds) {}
  std::int64_t seconds_ = 0;
};

}  // namespace varnlog::platform
