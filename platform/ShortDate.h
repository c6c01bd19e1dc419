#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/DateTime.h"

namespace varnlog::platform {

/// The system's "Short Date" form: the order of day, month and year, the separator, and whether day and
/// month are padded to two digits. The year always has four digits, so that a birth year reads back.
class ShortDate {
 public:
  enum class Order { kYearMonthDay, kDayMonthYear, kMonthDayYear };

  /// dd.MM.yyyy, the form used where the system has no locale set.
  ShortDate() = default;
  ShortDate(Order order, char separator, bool padded)
      : order_(order), separator_(separator), padded_(padded) {}

  /// From a CLDR date pattern such as "dd.MM.yy", "M/d/yy", "y-MM-dd"; dd.MM.yyyy when it cannot be read.
  [[nodiscard]] static ShortDate FromPattern(std::string_view pattern);

  /// The user's locale (LC_ALL, LC_TIME, LANG on POSIX). "C", "POSIX" and an unset locale count as none.
  [[nodiscard]] static ShortDate FromSystem();

  /// The date without its time; empty for a date that is not set.
  [[nodiscard]] std::string Format(DateTime date) const;

  /// "General Date": Format(), followed by a blank and hh:mm:ss unless the time is midnight.
  [[nodiscard]] std::string FormatGeneral(DateTime dateTime) const;

  /// Reads a date that a person entered, in this form's order, with '.', '/' or '-' between the numbers;
  /// two-digit years 30 to 99 are 19xx and 00 to 29 are 20xx; year-month-day with four year digits is always
  /// understood. Blanks around it are ignored; a time hh:mm[:ss] may follow. Nothing for any other text and
  /// for days that the calendar does not have.
  [[nodiscard]] std::optional<DateTime> Parse(std::string_view text) const;

  [[nodiscard]] Order order() const { return order_; }
  [[nodiscard]] char separator() const { return separator_; }

 private:
  Order order_ = Order::kDayMonthYear;
  char separator_ = '.';
  bool padded_ = true;
};

}  // namespace varnlog::platform
