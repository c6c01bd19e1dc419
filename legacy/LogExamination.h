#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "legacy/OldLog.h"
#include "platform/DateTime.h"

namespace varnlog::legacy {

/// What can be said of a file before anything is done with it.
struct LogExamination {
  enum class Verdict {
    kSound,       // every row declared was found and read, and nothing contradicts itself
    kDamaged,     // some of it can be read; `faults` says what is wrong
    kForeign,     // a Jet database without a log in it
    kUnreadable,  // no Jet database of a known version, or not even its list of tables can be read
  };
  Verdict verdict = Verdict::kUnreadable;
  FaultList faults;

  std::string version;  // "1.0", "1.1"; empty when not known
  RowCount exposures;
  std::uint32_t lastId = 0;  // the next row's id is one more
  platform::DateTime first;  // exposures; not set when there is none with a date
  platform::DateTime last;   //
  std::vector<std::string> linkedTables;
  bool hasPassword = false;
  bool isEncoded = false;
};

/// Called now and then with the number of rows done; returning false stops.
using RowProgress = std::function<bool(std::int64_t)>;
inline constexpr std::int64_t kRowsPerReport = 64;

/// Reads the whole log once. Jet keeps no checksums, so that a flipped bit within a value cannot be told;
/// what is told is everything that contradicts itself: counts, pages, pointers, offsets, ids, dates.
[[nodiscard]] LogExamination Examine(Bytes file);
/// Nothing when `progress` stopped it.
[[nodiscard]] std::optional<LogExamination> Examine(Bytes file, const RowProgress& progress);

}  // namespace varnlog::legacy
