#pragma once

#include <span>
#include <string_view>

#include "legacy/JetTable.h"

namespace varnlog::legacy {

inline constexpr const char* kExposureTable = "TXray";
inline constexpr const char* kConfigTable = "TConfig";
inline constexpr const char* kVersionKey = "DBVersion";

/// A column of the exposure table as every log has it.
struct LogColumn {
  std::string_view name;
  ColumnType type;
  int size = 0;          // kText: most characters
  bool since11 = false;  // not yet in logs of version 1.0
};

/// In the order of the current version; the id comes first.
[[nodiscard]] std::span<const LogColumn> ExposureColumns();
/// tCfgSKey, tCfgSSet.
[[nodiscard]] std::span<const LogColumn> ConfigColumns();

/// The places of `wanted` in an old table, -1 for a column that it lacks. A column that lacks although it has
/// to be there, or is of another type, is a fault; text columns may be memo columns.
[[nodiscard]] std::vector<int> MatchColumns(const JetTable& table, std::span<const LogColumn> wanted,
                                            FaultList& faults);

}  // namespace varnlog::legacy
