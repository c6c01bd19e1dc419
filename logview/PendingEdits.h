#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "core/UserDialog.h"
#include "db/dao/DBEngine.h"
#include "intake/CodeMappings.h"
#include "logview/CEdits.h"
#include "platform/ShortDate.h"

namespace varnlog::logview {

struct FlushResult {
  std::size_t locked = 0;                 // values locked
  std::size_t missing = 0;                // rows that somebody deleted meanwhile; a beep each
  std::optional<dao::EngineError> error;  // what stopped it; then nothing is locked and all is still pending
};

/// The query for the rows that have pending edits, the newest first.
[[nodiscard]] std::string PendingRows(const CEdits& edits);

/// The first few values that are not locked yet, as the user knows them, a line each. What cannot be read is
/// left out.
[[nodiscard]] std::string DescribePending(dao::Database& log, const CEdits& edits,
                                          const core::TextLookup& texts, const intake::ToothScheme& scheme,
                                          const platform::ShortDate& shortDate);

/// Locks every corrected value, all of them together: clears the edit flag that each entry names and takes
/// the entry out of `edits`.
FlushResult FlushPendingEdits(dao::Database& log, CEdits& edits, core::UserDialog& user);

}  // namespace varnlog::logview
