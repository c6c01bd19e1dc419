#include "logview/EditRules.h"

#include "logview/Columns.h"

namespace varnlog::logview {

namespace {

using namespace db::literals;

bool IsMale(dao::Recordset& rows) {
  return rows.Fields("tXraySSex").Text() == "m";
}

}  // namespace

EditDecision BeforeColEdit(dao::Recordset& rows, int column) {
  switch (CellStateOf(rows, column)) {
    case CellState::kEdit:
      return {.allowed = true, .beep = false, .message = {}};
    case CellState::kLocked:
      return {.allowed = false, .beep = false, .message = "RS_ERR_CHANGE"_key};
    case CellState::kNoneEdit:
      return {.allowed = false, .beep = true, .message = {}};
    case CellState::kPlain:
      break;
  }
  return {};
}

EditDecision ButtonClick(dao::Recordset& rows, int column) {
  EditDecision decision = BeforeColEdit(rows, column);
  decision.beep = !decision.allowed;
  return decision;
}

CellState CellStateOf(dao::Recordset& rows, int column) {
  if (column < 0 || column >= kColumnCount) return CellState::kPlain;
  const Column& shown = kColumns[static_cast<std::size_t>(column)];
  if (shown.field.empty()) return CellState::kPlain;
  if (column == kPregnancyColumn && IsMale(rows)) return CellState::kNoneEdit;
  if (shown.editFlag.empty()) return CellState::kEdit;
  return rows.Fields(shown.editFlag).Boolean() ? CellState::kEdit : CellState::kLocked;
}

std::optional<int> InputLimit(dao::Recordset& rows, int column) {
  // The pregnancy is chosen from a list; its field has room for the code only, not for the text shown. A dose
  // that is too long is reported when it is written.
  if (column < kTypeColumn || column >= kColumnCount || column == kDoseColumn) return std::nullopt;
  return rows.Fields(kColumns[static_cast<std::size_t>(column)].field).Size();
}

}  // namespace varnlog::logview
