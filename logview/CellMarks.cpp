#include "logview/CellMarks.h"

#include <algorithm>

namespace varnlog::logview {

void MarkChanged(dao::Database& log, const std::vector<std::int64_t>& exposures, ui::RowBuffer& rowBuf) {
  for (const seals::ChangedValue& changed : seals::ReadChangedValues(log, exposures)) {
    const auto column = ColumnOf(changed.field);
    if (!column) continue;
    const auto row = std::find(exposures.begin(), exposures.end(), changed.exposure);
    if (row != exposures.end()) rowBuf.SetMarked(static_cast<int>(row - exposures.begin()), *column);
  }
}

std::string NoteOf(dao::Database& log, std::int64_t exposure, int column, const HistoryText& text) {
  const auto entries = seals::ReadHistory(log, exposure);
  const auto last = std::find_if(entries.rbegin(), entries.rend(), [column](const auto& entry) {
    return seals::IsOfValue(entry.field) && ColumnOf(entry.field) == column;
  });
  return last == entries.rend() ? std::string() : text.Note(*last);
}

}  // namespace varnlog::logview
