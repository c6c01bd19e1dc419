#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "db/dao/DBEngine.h"
#include "logview/HistoryText.h"

namespace varnlog::logview {

/// What was entered and changed of exposures after they came into the log, a text each for the report. Asked
/// again, it says the same, whatever is entered meanwhile.
class LaterEntries {
 public:
  /// All outlive it. Throws dao::EngineError.
  LaterEntries(dao::Database& log, const core::TextLookup& texts, const intake::ToothScheme& scheme,
               const platform::ShortDate& shortDate);

  /// The oldest first; none for most exposures. `type` is the exposure's. Throws dao::EngineError.
  [[nodiscard]] std::vector<std::string> Of(std::int64_t exposure, std::string_view type) const;

 private:
  dao::Database* log_;
  HistoryText text_;
  std::int64_t lastEntry_;
  std::vector<std::int64_t> changed_;  // exposures that have any, in ascending order
};

}  // namespace varnlog::logview
