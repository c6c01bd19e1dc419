#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "logview/Tally.h"

namespace varnlog::statistics {

struct Month {
  int year = 0;
  int month = 0;
  friend auto operator<=>(const Month&, const Month&) = default;
};

/// The exposures of a month or of another part.
struct Part {
  logview::Retakes counted;
  std::map<std::string, std::int64_t, std::less<>> byType;  // codes as they are stored
};

/// The doses of a type of exposure.
struct DoseOfType {
  logview::Doses doses;
  std::vector<double> latest;  // the newest kLatest that are numbers, the newest first
};
inline constexpr std::size_t kLatest = 20;

/// What a number of exposures have in common.
struct Statistics {
  logview::Retakes all;
  std::int64_t undated = 0;        // without a usable time stamp: in no month, hour or weekday
  std::int64_t pastRetention = 0;  // need not be kept any longer
  std::map<Month, Part> months;    // those that have exposures
  std::map<std::string, logview::Retakes, std::less<>> persons;  // responsible; "" where nobody was entered
  std::map<std::string, DoseOfType, std::less<>> types;
  std::array<std::int64_t, 24> hours{};
  std::array<std::int64_t, 7> weekdays{};  // from Monday
};

}  // namespace varnlog::statistics
