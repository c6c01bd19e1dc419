#pragma once

#include <functional>
#include <string>

#include "db/dao/EngineError.h"

namespace varnlog::dao {

class Connection;

/// True for an error that a damaged page causes.
[[nodiscard]] bool IsDamage(const EngineError& error);

/// Copies every readable row of a table into the table of the same name in `mended`, walking around damaged
/// pages. `progress` gets the part done and returns false to stop (kCancelled).
void SalvageTable(Connection& damaged, Connection& mended, const std::string& table,
                  const std::function<bool(double)>& progress);

}  // namespace varnlog::dao
