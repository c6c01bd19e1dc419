#pragma once

#include <cstdint>

#include "db/dao/DBEngine.h"
#include "platform/Author.h"

namespace varnlog::seals {

/// Locks the values that a run of the program on this workstation entered and, because it ended without
/// closing the log, left open. What runs of other workstations entered, or one that is still going on, stays
/// as it is. The number of values. Throws dao::EngineError.
std::int64_t LockLeftOver(dao::Database& log, const platform::Author& author);

}  // namespace varnlog::seals
