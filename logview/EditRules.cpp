#include "logview/EditRules.h"

#include "db/dao/ServerLink.h"

namespace varnlog::logview {

using namespace core::literals;

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

CellStates::CellStates(dao::Recordset& rows) : sex_(rows.Fields("tXraySSex")) {
  for (std::size_t i = 0; i < kColumns.size(); ++i) {
    if (!kColumns[i].editFlag.empty()) flags_[i] = &rows.Fields(kColumns[i].editFlag);
  }
}

CellState CellStates::Of(int column) const {
  if (column < 0 || column >= kColumnCount) return CellState::kPlain;
  const auto at = static_cast<std::size_t>(column);
  if (kColumns[at].field.empty()) return CellState::kPlain;
  if (kColumns[at].exceptForMen && sex_.Text() == "m") return CellState::kNoneEdit;
  if (flags_[at] == nullptr) return CellState::kEdit;
  return flags_[at]->Boolean() ? CellState::kEdit : CellState::kLocked;
}

CellState CellStateOf(dao::Recordset& rows, int column) {
  return CellStates(rows).Of(column);
}

core::TextKey ReadOnlyReason(const core::Globals& globals) {
  const auto log = globals.LogEngineGl ? globals.LogEngineGl->Database() : nullptr;
  if (!log || !log->IsReadOnly()) return "RS_ERR_READONLY"_key;
  return dao::IsServerLink(log->Name()) ? "RS_ERR_READONLYSERVER"_key : "RS_ERR_READONLYFILE"_key;
}

std::optional<int> InputLimit(dao::Recordset& rows, int column) {
  if (column < 0 || column >= kColumnCount) return std::nullopt;
  const Column& limited = kColumns[static_cast<std::size_t>(column)];
  if (!limited.IsWritten() || !limited.limitsInput) return std::nullopt;
  return rows.Fields(limited.field).Size();
}

}  // namespace varnlog::logview
