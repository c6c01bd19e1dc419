#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "db/dao/DBEngine.h"
#include "intake/IntakeCopy.h"

namespace varnlog::intake {

/// Committed runs, kept in TConfig under "IntakeRun": the last one, and on a server, where exchange files of
/// several sites come together, the last seven, the latest first. A run is written there in the same
/// transaction as its rows, so that a copy that is found later tells whether its records are in the log.
///
/// `asked` if that is one of them, else the last; "" when the log knows of none. Both throw EngineError.
[[nodiscard]] RunId ReadRunMark(dao::Database& log, const RunId& asked);
void WriteRunMark(dao::Database& log, const RunId& id);

/// Bytes of records that are in the log although they could not be removed, kept in TConfig under
/// "IntakeApplied1" and so on. Information in them is not applied again: in between, the user may have
/// entered and locked another value. Exchange files of several sites may come together in a log: a note is
/// found again by what stands in a file, not by where it lies.
struct AppliedBytes {
  std::uint64_t length = 0;
  std::string digest;  // SHA-256
  bool operator==(const AppliedBytes&) const = default;
};
/// Both throw EngineError. Writing what stands there already changes nothing.
[[nodiscard]] std::vector<AppliedBytes> ReadAppliedBytes(dao::Database& log);
void WriteAppliedBytes(dao::Database& log, const std::vector<AppliedBytes>& applied);

}  // namespace varnlog::intake
