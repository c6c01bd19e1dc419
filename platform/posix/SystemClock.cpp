#include <algorithm>
#include <ctime>

#include "platform/Clock.h"

namespace varnlog::platform {

namespace {

DateTime FromBrokenDown(const std::tm& time) {
  // A leap second is reported as second 60, which this program's dates do not have.
  return DateTime::FromCivil(time.tm_year + 1900, time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min,
                             std::min(time.tm_sec, 59))
      .value_or(DateTime());
}

}  // namespace

DateTime SystemClock::Now() const {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  return localtime_r(&now, &local) == nullptr ? DateTime() : FromBrokenDown(local);
}

Instant SystemClock::NowUtc() const {
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  std::tm local{};
  if (gmtime_r(&now, &utc) == nullptr || localtime_r(&now, &local) == nullptr) return {};
  constexpr int kSecondsAMinute = 60;
  return {FromBrokenDown(utc), static_cast<int>(local.tm_gmtoff / kSecondsAMinute)};
}

}  // namespace varnlog::platform
