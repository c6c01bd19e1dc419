#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "db/dao/DBEngine.h"

namespace varnlog::logview {

/// Why a measured value looks mistyped. It is for the user to decide.
struct Implausible {
  bool isNoNumber = false;
  std::string least = {};  // the usual values of that type, as they stand in the log
  std::string greatest = {};
};

/// Looks at an entry for a field with a measured value (time, voltage, current, dose) beside the latest 1,000
/// exposures of its type. Nothing when there is nothing to wonder about: also for an empty one, and for a
/// number as long as there are too few others. Throws dao::EngineError.
[[nodiscard]] std::optional<Implausible> WhyImplausible(dao::Database& log, std::string_view type,
                                                        const std::string& field, std::string_view entry);

}  // namespace varnlog::logview
