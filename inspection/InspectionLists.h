#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "db/dao/DBEngine.h"

namespace varnlog::inspection {

/// Which of a period's exposures stand in the lists of their own, by number.
struct InspectionLists {
  std::vector<std::int64_t> incomplete;  // lack a value that has to be entered
  std::vector<std::int64_t> retakes;     // repeats, and exposures of no diagnostic use
  std::vector<std::int64_t> sample;      // of some patients of each type
};

/// In the order of `exposures`. The patients are spread evenly over those of a type, so that asking again
/// names the same ones. Throws dao::EngineError.
[[nodiscard]] InspectionLists FindLists(dao::Database& log, std::span<const std::int64_t> exposures,
                                        int patients);

}  // namespace varnlog::inspection
