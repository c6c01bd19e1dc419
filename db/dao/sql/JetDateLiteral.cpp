#include "db/dao/sql/JetDateLiteral.h"

#include <cstddef>

#include "platform/Ascii.h"

namespace varnlog::dao {
namespace {

using platform::ascii::IsDigit;
using platform::ascii::Lower;

/// Eats a literal from the left; after the first thing that does not fit it stays failed.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  [[nodiscard]] bool failed() const { return failed_; }
  [[nodiscard]] bool AtEnd() const { return rest_.empty(); }

  int Number(std::size_t fewestDigits, std::size_t mostDigits) {
    std::size_t digits = 0;
    int value = 0;
    while (digits < rest_.size() && digits < mostDigits && IsDigit(rest_[digits])) {
      value = value * 10 + (rest_[digits++] - '0');
    }
    if (digits < fewestDigits) failed_ = true;
    rest_.remove_prefix(digits);
    return value;
  }

  void Separator(char separator) {
    if (rest_.empty() || rest_.front() != separator) {
      failed_ = true;
      return;
    }
    rest_.remove_prefix(1);
  }

  bool Blanks() {
    const std::size_t blanks = rest_.find_first_not_of(' ');
    const bool any = blanks != 0 && !rest_.empty();
    rest_.remove_prefix(blanks == std::string_view::npos ? rest_.size() : blanks);
    return any;
  }

  /// 'a' for AM, 'p' for PM.
  char HalfOfDay() {
    if (rest_.size() < 2 || Lower(rest_[1]) != 'm') return '\0';
    const char half = Lower(rest_[0]);
    if (half != 'a' && half != 'p') return '\0';
    rest_.remove_prefix(2);
    return half;
  }

 private:
  std::string_view rest_;
  bool failed_ = false;
};

/// The hour on the 24-hour clock, or -1: there is no 0 AM and no 13 PM.
int HourOfDay(int hour, char half) {
  if (half == '\0') return hour;
  if (hour < 1 || hour > 12) return -1;
  return hour % 12 + (half == 'p' ? 12 : 0);
}

}  // namespace

std::optional<platform::DateTime> ParseDateLiteral(std::string_view text) {
  Scanner scan(text);
  scan.Blanks();
  const int month = scan.Number(1, 2);
  scan.Separator('/');
  const int day = scan.Number(1, 2);
  scan.Separator('/');
  const int year = scan.Number(4, 4);
  int hour = 0;
  int minute = 0;
  int second = 0;
  if (scan.Blanks() && !scan.AtEnd()) {
    hour = scan.Number(1, 2);
    scan.Separator(':');
    minute = scan.Number(1, 2);
    scan.Separator(':');
    second = scan.Number(1, 2);
    scan.Blanks();
    hour = HourOfDay(hour, scan.HalfOfDay());
    scan.Blanks();
  }
  if (scan.failed() || !scan.AtEnd()) return std::nullopt;
  return platform::DateTime::FromCivil(year, month, day, hour, minute, second);
}

}  // namespace varnlog::dao
