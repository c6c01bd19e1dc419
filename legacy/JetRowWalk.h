#pragma once

#include <cstdint>
#include <functional>

#include "legacy/Fault.h"
#include "legacy/JetLongValue.h"
#include "legacy/JetPages.h"
#include "legacy/JetTable.h"

namespace varnlog::legacy {

struct WalkEnd {
  std::uint64_t found = 0;  // rows that the pages list, readable or not
  bool reachedEnd = true;   // false: the visitor had enough, or the budget was spent
};

/// Calls `visit` with the place and the bytes of every row of `table`, moved ones at their new place, until
/// it returns false. What cannot be followed is a fault and is left out.
WalkEnd WalkRows(const JetPages& pages, const JetTable& table, Budget& budget, FaultList& faults,
                 const std::function<bool(RowPlace, Bytes)>& visit);

}  // namespace varnlog::legacy
