#pragma once

#include <string>
#include <vector>

#include "db/dao/RepairReport.h"

namespace varnlog::dao {

class Connection;

/// As Database::UnusedIds().
[[nodiscard]] std::vector<IdRange> UnusedIds(Connection& connection, const std::string& table);

}  // namespace varnlog::dao
