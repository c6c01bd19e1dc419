#include <algorithm>
#include <ctime>

#include "platform/Clock.h"

namespace varnlog::platform {

DateTime SystemClock::Now() const {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  if (localtime_r(&now, &local) == nullptr) return {};
  // A leap second is reported as second 60, which this program's dates do not have.
  return DateTime::FromCivil(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                             local.tm_min, std::min(local.tm_sec, 59))
      .value_or(DateTime());
}

}  // namespace varnlog::platform
