#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "db/dao/RowSet.h"

namespace varnlog::dao {

class Statement;

/// Appends a form of all columns of the statement's row that is the same for the same values only.
void AppendRowKey(const Statement& row, int columns, std::string& key);

/// The values of such a form; texts point into it.
[[nodiscard]] std::vector<CellView> ReadRowKey(std::string_view key);

/// Less than, equal, greater than 0 as the storage orders two values: NULL, numbers, texts; texts by the
/// collation when `collated`, else by their bytes.
[[nodiscard]] int CompareCells(const CellView& a, const CellView& b, bool collated);

}  // namespace varnlog::dao
