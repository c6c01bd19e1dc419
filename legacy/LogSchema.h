#pragma once

#include <span>
#include <string_view>

#include "core/LogConfig.h"
#include "core/LogLayout.h"
#include "legacy/JetTable.h"

namespace varnlog::legacy {

/// The places of `wanted` in an old table, -1 for a column that it lacks. A column that lacks although it has
/// to be there, or is of another type, is a fault; text columns may be memo columns.
[[nodiscard]] std::vector<int> MatchColumns(const JetTable& table, std::span<const core::LogField> wanted,
                                            FaultList& faults);

}  // namespace varnlog::legacy
