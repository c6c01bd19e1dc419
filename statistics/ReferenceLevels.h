#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/DateTime.h"

namespace varnlog::statistics {

/// Name of the table in the program folder.
inline constexpr std::string_view kReferenceLevels = "reference-levels.tsv";

/// A diagnostic reference level: the dose that usual exposures of a type should not exceed.
struct ReferenceLevel {
  platform::DateTime since;
  double dose = 0;  // mGycm2
  std::string source;
  friend bool operator==(const ReferenceLevel&, const ReferenceLevel&) = default;
};

/// Those of each type of exposure that hold on a day.
using ReferenceLevels = std::map<std::string, ReferenceLevel, std::less<>>;

struct ReadLevels {
  ReferenceLevels levels;
  std::vector<int> badLines;  // that hold a level but cannot be read, counted from 1
};

/// Reads the table: lines of type, day from which it holds (YYYY-MM-DD), dose in mGycm2, source, with tabs
/// between them. The first line is the heading; one without a dose says nothing.
[[nodiscard]] ReadLevels ReadReferenceLevels(std::string_view text, platform::DateTime today);
/// The same of a file; none when it cannot be read.
[[nodiscard]] ReadLevels LoadReferenceLevels(const std::string& file, platform::DateTime today);

}  // namespace varnlog::statistics
