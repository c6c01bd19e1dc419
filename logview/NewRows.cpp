#include "logview/NewRows.h"

namespace varnlog::logview {

void NewRows::BeginUpdate(dao::Database& log) {
  newest_.reset();
  try {
    const auto rows =
        log.OpenRecordset("SELECT TXray.tXrayCulIntIDPk FROM TXray ORDER BY TXray.tXrayCulIntIDPk DESC;");
    // In a log that was empty all would be marked, which says nothing.
    if (!rows->IsEOF()) newest_ = rows->Fields("tXrayCulIntIDPk").Number();
  } catch (const dao::EngineError&) {
    // A log that cannot be read is told by the update itself; without a number nothing is marked.
    return;
  }
}

}  // namespace varnlog::logview
