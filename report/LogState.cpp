#include "report/LogState.h"

#include "seals/Anchor.h"
#include "seals/SealedFields.h"

namespace varnlog::report {

std::optional<LogState> ReadLogState(dao::Database& log) {
  if (!seals::HasSealTables(log)) return std::nullopt;
  const seals::Head head = seals::ReadHead(log);
  if (head.number == 0) return std::nullopt;
  return LogState{seals::PrintedAnchor(head), log.OpenRecordset(seals::kExposures)->RecordCount()};
}

}  // namespace varnlog::report
