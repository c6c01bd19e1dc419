#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "db/dao/DBEngine.h"
#include "platform/Author.h"
#include "platform/Clock.h"

namespace varnlog::seals {

/// Seals a log that a repair has just put together from what could be read of a damaged file: what was lost
/// is named in its history, and from then on it is verified against what was left. `lostExposures` are
/// numbers. Nothing for a log without seals. Throws dao::EngineError.
void SealRepaired(dao::Database& log, const std::vector<dao::IdRange>& lostExposures,
                  const platform::Author& author, const platform::Clock& clock);

/// The seal of the newest repair that lost something: what stands in the log from then on.
struct RepairBase {
  std::int64_t seal = 0;
  std::int64_t firstHistory = 0;  // its own entries; those before were left over
  std::int64_t firstRow = 0;      // exposures that were left
  std::int64_t lastRow = 0;
  std::int64_t rows = 0;
  std::string rowDigest;   // over them as they were then
  std::string leftDigest;  // over the entries and seals that were left
};

/// Among the seals from `firstSeal` on; nothing when no repair has lost anything.
[[nodiscard]] std::optional<RepairBase> ReadRepairBase(dao::Database& log, std::int64_t firstSeal = 1);

/// Whether the entries and seals that the repair left are still the same.
[[nodiscard]] bool AreLeftAsSealed(dao::Database& log, const RepairBase& base);

/// What a repair could not save.
struct Loss {
  enum class What { kExposureNumbers, kEntryNumbers, kSealNumbers };
  What what = What::kExposureNumbers;
  std::string numbers;  // "17-20, 25"
  std::int64_t seal = 0;
  friend bool operator==(const Loss&, const Loss&) = default;
};

/// What all repairs of the log have named. Throws dao::EngineError.
[[nodiscard]] std::vector<Loss> ReadLosses(dao::Database& log);

}  // namespace varnlog::seals
