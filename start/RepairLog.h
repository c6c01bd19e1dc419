#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/TextLookup.h"
#include "db/CJetEngine.h"
#include "platform/Author.h"
#include "platform/Clock.h"

namespace varnlog::start {

/// What came of repairing a log.
struct LogRepair {
  /// Why it could not be repaired or looked at.
  std::optional<dao::EngineError> error;
  /// What was damaged in the file; empty when that was sound.
  std::vector<std::string> damage;
  /// Names of what the log lacked and has again.
  std::vector<std::string> restored;
  /// Exposures in the log now.
  std::int64_t exposures = 0;
  /// Numbers of exposures that are missing and were not known to be before. They are noted in the log.
  std::vector<dao::IdRange> missing;
  /// Where the damaged file stays, with all that could not be read; "" when the file was sound.
  std::string damagedFile;
  /// What is wrong with the log still.
  std::vector<std::string> remaining;

  [[nodiscard]] bool IsDone() const { return !error; }
  [[nodiscard]] bool IsWhole() const { return IsDone() && missing.empty() && remaining.empty(); }
};

/// The same in the user's language.
[[nodiscard]] std::string RepairText(const core::TextLookup& texts, const LogRepair& repair);

/// Repairs the file, puts back what the log lacks and seals what came of it. The log must not be open in
/// `engine`, and is closed afterwards; a workspace is made when there is none.
[[nodiscard]] LogRepair RepairLog(db::CJetEngine& engine, const std::string& file,
                                  const platform::Author& author, const platform::Clock& clock);

}  // namespace varnlog::start
