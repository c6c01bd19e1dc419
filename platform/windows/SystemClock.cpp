#include <algorithm>

#include "platform/Clock.h"
#include "platform/windows/System.h"

namespace varnlog::platform {
namespace {

DateTime FromSystem(const SYSTEMTIME& time) {
  return DateTime::FromCivil(time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute,
                             std::min<int>(time.wSecond, 59))
      .value_or(DateTime());
}

}  // namespace

DateTime SystemClock::Now() const {
  SYSTEMTIME local{};
  GetLocalTime(&local);
  return FromSystem(local);
}

Instant SystemClock::NowUtc() const {
  SYSTEMTIME utc{};
  SYSTEMTIME local{};
  GetSystemTime(&utc);
  if (SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local) == FALSE) return {FromSystem(utc), 0};
  constexpr int kSecondsAMinute = 60;
  const auto offset = FromSystem(local).SecondsSinceEpoch() - FromSystem(utc).SecondsSinceEpoch();
  return {FromSystem(utc), static_cast<int>(offset / kSecondsAMinute)};
}

}  // namespace varnlog::platform
