#include "statistics/Retention.h"

#include <algorithm>
#include <vector>

#include "db/dao/TableScan.h"

namespace varnlog::statistics {

using platform::DateTime;

namespace {

constexpr int kYears = 10;
constexpr int kOfAge = 18;
constexpr int kUntilBirthday = 28;

DateTime YearsAfter(DateTime date, int years) {
  return DateTime::FromSerial(date.Year() + years, date.Month(), date.Day());
}

}  // namespace

DateTime KeptUntil(DateTime taken, DateTime born) {
  if (!taken.IsSet() || !born.IsSet()) return {};
  const DateTime usual = YearsAfter(taken, kYears);
  const bool wasOfAge = YearsAfter(born, kOfAge) <= taken;
  return wasOfAge ? usual : std::max(usual, YearsAfter(born, kUntilBirthday));
}

Retention::Retention(DateTime today)
    : today_(today.DatePart()), tenYearsAgo_(YearsAfter(today.DatePart(), -kYears).ToIso()) {}

bool Retention::IsOver(std::string_view taken, std::string_view born) const {
  // Most exposures are younger, and the stored form sorts as time does.
  if (taken.empty() || taken >= tenYearsAgo_) return false;
  const DateTime end =
      KeptUntil(DateTime::FromIso(taken).value_or(DateTime()), DateTime::FromIso(born).value_or(DateTime()));
  return end.IsSet() && end < today_;
}

std::int64_t CountPastRetention(dao::Database& log, DateTime today) {
  const Retention retention(today);
  const std::vector<std::string> fields = {"tXrayTs", "tXrayDBirthday"};
  const auto scan = log.Scan("TXray", fields, {});
  std::int64_t count = 0;
  while (scan->Next()) count += retention.IsOver(scan->Values()[0].text, scan->Values()[1].text) ? 1 : 0;
  return count;
}

}  // namespace varnlog::statistics
