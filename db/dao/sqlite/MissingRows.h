#pragma once

#include <string>
#include <vector>

#include "db/dao/RepairReport.h"

namespace varnlog::dao {

class Connection;

/// Numbers that no row of a table has, from 1 to the last one that was given out. Nothing for a table without
/// a counter.
[[nodiscard]] std::vector<IdRange> UnusedIds(Connection& connection, const std::string& table);

/// Numbers of the rows that `damaged` had and `mended` has not. An index of the damaged table that is whole
/// tells which there were; without one all unused numbers count, because the counter gives them out one after
/// the other.
[[nodiscard]] std::vector<IdRange> MissingRows(Connection& damaged, Connection& mended,
                                               const std::string& table);

}  // namespace varnlog::dao
