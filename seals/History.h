#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "db/dao/DBEngine.h"
#include "platform/DateTime.h"

namespace varnlog::seals {

/// Who sealed something, where and when.
struct Origin {
  std::int64_t seal = 0;
  std::string kind;
  platform::DateTime time;  // UTC
  int offsetMinutes = 0;
  std::string account;
  std::string fullName;
  std::string place;
  std::string program;

  /// The time that people had there; not set where the seal holds none.
  [[nodiscard]] platform::DateTime LocalTime() const;
};

/// One change of one field, or, first of all, how the exposure came into the log (`field` is "").
struct HistoryEntry {
  std::int64_t number = 0;
  std::int64_t exposure = 0;
  std::string field;
  std::optional<std::string> before;  // nothing for NULL
  std::optional<std::string> after;
  std::string kind;
  Origin origin;
};

/// A value, other than a flag, that is not as it was added.
struct ChangedValue {
  std::int64_t exposure = 0;
  std::string field;
};
[[nodiscard]] bool IsOfValue(std::string_view field);

/// Those of some exposures, in no particular order; a value that was changed twice stands there twice. Throws
/// dao::EngineError; empty for a log without history.
[[nodiscard]] std::vector<ChangedValue> ReadChangedValues(dao::Database& log,
                                                          std::span<const std::int64_t> exposures);

/// All exposures with such a value, in ascending order. Throws dao::EngineError.
[[nodiscard]] std::vector<std::int64_t> ReadChangedExposures(dao::Database& log);

/// The number of the newest entry; 0 without any. Throws dao::EngineError.
[[nodiscard]] std::int64_t LastEntry(dao::Database& log);

/// Everything that is known of an exposure, its origin first. An exposure without a seal has none. Throws
/// dao::EngineError; empty for a log without history.
[[nodiscard]] std::vector<HistoryEntry> ReadHistory(dao::Database& log, std::int64_t exposure);

}  // namespace varnlog::seals
