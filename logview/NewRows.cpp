#include "logview/NewRows.h"

namespace varnlog::logview {

void NewRows::BeginUpdate(dao::Database& log) {
  newest_.reset();
  try {
    const auto rows =
        log.OpenRecordset("SELECT TXray.tXrayCulIntIDPk FROM TXray ORDER BY TXray.tXrayCulIntIDPk DESC;");
    newest_ = rows->IsEOF() ? 0 : rows->Fields("tXrayCulIntIDPk").Number();
  } catch (const dao::EngineError&) {
    // A log that cannot be read is told by the update itself; without a number nothing is marked.
    return;
  }
}

}  // namespace varnlog::logview
