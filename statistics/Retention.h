#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "db/dao/DBEngine.h"
#include "platform/DateTime.h"

namespace varnlog::statistics {

/// The last day on which an exposure has to be kept: ten years after it, and those of patients who were not
/// of age until their 28th birthday. Not set when it cannot be told. A patient whose birth date is not known
/// counts as one for whom it cannot.
[[nodiscard]] platform::DateTime KeptUntil(platform::DateTime taken, platform::DateTime born);

/// How many exposures of the log are past it on a day. Throws dao::EngineError.
[[nodiscard]] std::int64_t CountPastRetention(dao::Database& log, platform::DateTime today);

/// Which exposures are past it, many of them, from their stored dates.
class Retention {
 public:
  explicit Retention(platform::DateTime today);
  [[nodiscard]] bool IsOver(std::string_view taken, std::string_view born) const;

 private:
  platform::DateTime today_;
  std::string tenYearsAgo_;
};

}  // namespace varnlog::statistics
