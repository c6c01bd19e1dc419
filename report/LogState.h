#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "db/dao/DBEngine.h"

namespace varnlog::report {

/// The state of the log that a report is made of: what `varnlogctl verify --anchor` can be asked about later.
struct LogState {
  std::string anchor;  // to be typed
  std::int64_t exposures = 0;
};

/// Nothing for a log without seals. Throws dao::EngineError.
[[nodiscard]] std::optional<LogState> ReadLogState(dao::Database& log);

}  // namespace varnlog::report
