#pragma once

#include <memory>

#include "db/dao/postgres/ServerStorage.h"
#include "db/dao/rows/RowSet.h"
#include "db/dao/sql/ResolvedSelect.h"

namespace varnlog::dao {

/// The rows of a SELECT DISTINCT, one value a column. Of rows that are equal by the order of texts the first
/// one that was added stays. Where an index keeps equal rows together, it is walked from one combination of
/// its fields to the next, so that the time depends on how many there are and not on the rows.
[[nodiscard]] std::shared_ptr<const RowSet> ReadDistinct(ServerStorage& storage,
                                                         const ResolvedSelect& select);

}  // namespace varnlog::dao
