#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "db/dao/DBEngine.h"

// What a log has to have beyond a sound file. All of it throws dao::EngineError where the log cannot be read
// or written.

namespace varnlog::core {

/// What is missing or not as it should be, one finding an entry, in English like the findings of
/// dao::Database::Check(): tables, fields, the row "DBVersion", indexes, exposures whose numbers are missing.
[[nodiscard]] std::vector<std::string> CheckLog(dao::Database& log);

/// Puts back what a log lacks as far as that can be known, and returns its names: TConfig and its rows,
/// indexes. Values are never made up.
std::vector<std::string> CompleteLog(dao::Database& log);

/// Numbers that exposures had, or that were never given out where the log comes from, and that are not yet
/// noted in the log.
[[nodiscard]] std::vector<dao::IdRange> MissingExposures(dao::Database& log);

/// A repair that lost exposures notes it in TConfig under this name and the time.
inline constexpr std::string_view kRepairedKey = "Repaired ";

/// Notes in the log that these are missing, so that later checks know of them.
void NoteMissingExposures(dao::Database& log, const std::vector<dao::IdRange>& missing);

}  // namespace varnlog::core
