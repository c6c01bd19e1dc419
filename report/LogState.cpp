#include "report/LogState.h"

#include "seals/Anchor.h"
#include "seals/SealedFields.h"

namespace varnlog::report {

std::optional<LogState> ReadLogState(dao::Database& log) {
  if (!seals::HasSeals(log)) return std::nullopt;
  return LogState{seals::PrintedAnchor(seals::ReadHead(log)),
                  log.OpenRecordset(seals::kExposures)->RecordCount()};
}

}  // namespace varnlog::report
