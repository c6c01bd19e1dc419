#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "db/dao/DBEngine.h"
#include "seals/SealTables.h"

namespace varnlog::server {

/// Hears how many rows were written or compared; false stops it (dao::ErrorNumber::kCancelled).
using TransferProgress = std::function<bool(std::int64_t rows)>;

/// What was taken from one log into another and found to be the same there.
struct Transfer {
  std::int64_t exposures = 0;
  std::int64_t entries = 0;  // of the history
  std::int64_t values = 0;   // compared one by one
  seals::Head head;
};

/// Takes all rows of a log into one that seals::IsUnused(), each with its number, and compares every value
/// with what stands there then; a seal with which that was begun gives way. Within a transaction of both, in
/// which the target's rules do not hold. Throws dao::EngineError, kDamaged where a value differs.
[[nodiscard]] Transfer TransferLog(dao::Database& source, dao::Database& target,
                                   const TransferProgress& progress);

}  // namespace varnlog::server
