#pragma once

#include <string>
#include <vector>

#include "db/dao/DBEngine.h"

namespace varnlog::logview {

/// The different texts of a field in the latest exposures, the most frequent first. Throws dao::EngineError.
[[nodiscard]] std::vector<std::string> SuggestionsFor(dao::Database& log, const std::string& field);

}  // namespace varnlog::logview
