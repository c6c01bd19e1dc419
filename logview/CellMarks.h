#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "db/dao/DBEngine.h"
#include "logview/HistoryText.h"
#include "ui/RowBuffer.h"

namespace varnlog::logview {

/// Marks the cells that were entered or changed after their exposures came into the log. `exposures` are
/// their numbers row by row, 0 for a row that is not there any more. Throws dao::EngineError.
void MarkChanged(dao::Database& log, const std::vector<std::int64_t>& exposures, ui::RowBuffer& rowBuf);

/// Who changed what a column shows of an exposure last, and when; "" when nobody did. Throws
/// dao::EngineError.
[[nodiscard]] std::string NoteOf(dao::Database& log, std::int64_t exposure, int column,
                                 const HistoryText& text);

}  // namespace varnlog::logview
