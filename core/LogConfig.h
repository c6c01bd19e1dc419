#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "db/dao/DBEngine.h"

// The settings that a log carries in itself: the rows of its table TConfig. All of it throws dao::EngineError
// where the table cannot be read or written.

namespace varnlog::core {

inline constexpr std::string_view kVersionKey = "DBVersion";
inline constexpr std::string_view kReadOnlyKey = "ReadOnly";

/// Nothing when the log has no row of that key.
[[nodiscard]] std::optional<std::string> ReadLogConfig(dao::Database& log, std::string_view key);

/// False when there is no row of that key; none is made then.
bool ChangeLogConfig(dao::Database& log, std::string_view key, std::string_view value);

/// Changes the row, or adds it.
void WriteLogConfig(dao::Database& log, std::string_view key, std::string_view value);

}  // namespace varnlog::core
