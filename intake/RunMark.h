#pragma once

#include "db/dao/DBEngine.h"
#include "intake/IntakeCopy.h"

namespace varnlog::intake {

/// The last committed run, kept in TConfig under "IntakeRun". It is written in the same transaction as the
/// run's rows, so that a copy that is found later tells whether its records are in the log.
///
/// "" when the log knows of none. Both throw EngineError.
[[nodiscard]] RunId ReadRunMark(dao::Database& log);
void WriteRunMark(dao::Database& log, const RunId& id);

}  // namespace varnlog::intake
