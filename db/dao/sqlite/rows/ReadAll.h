#pragma once

#include <memory>

#include "db/dao/rows/RowSet.h"
#include "db/dao/sqlite/rows/Select.h"

namespace varnlog::dao {

/// All rows of a statement.
[[nodiscard]] std::shared_ptr<const RowSet> ReadAll(FileStorage& storage, Select& select,
                                                    const Parameters& parameters);

}  // namespace varnlog::dao
