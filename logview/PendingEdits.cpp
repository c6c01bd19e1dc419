#include "logview/PendingEdits.h"

#include <charconv>

namespace varnlog::logview {

namespace {

std::int64_t RowId(const CEdit& edit) {
  std::int64_t id = 0;
  std::from_chars(edit.ID.data(), edit.ID.data() + edit.ID.size(), id);
  return id;
}

/// False when the row is gone.
bool LockValue(dao::Recordset& rows, const CEdit& edit) {
  rows.Seek("=", {RowId(edit)});
  if (rows.NoMatch()) return false;
  rows.Edit();
  rows.Fields(edit.Field).SetBoolean(false);
  rows.Update();
  return true;
}

void LockAll(dao::Recordset& rows, const CEdits& edits, core::UserDialog& user, FlushResult& result) {
  for (const CEdit& edit : edits) {
    if (LockValue(rows, edit)) {
      ++result.locked;
    } else {
      ++result.missing;
      user.Beep();
    }
  }
}

}  // namespace

std::string PendingRows(const CEdits& edits) {
  std::string ids;
  for (const CEdit& edit : edits) ids.append(ids.empty() ? "" : ",").append(edit.ID);
  return "SELECT TXray.* From TXray WHERE (((TXray.tXrayCulIntIDPk) In (" + (ids.empty() ? "0" : ids) +
         "))) ORDER BY TXray.tXrayTs DESC;";
}

FlushResult FlushPendingEdits(dao::Database& log, CEdits& edits, core::UserDialog& user) {
  FlushResult result;
  if (edits.Count() == 0) return result;
  try {
    const auto rows = log.OpenRecordset("TXray", dao::RecordsetType::kTable);
    rows->SetIndex("PrimaryKey");
    LockAll(*rows, edits, user, result);
  } catch (const dao::EngineError& error) {
    result.error = error;
  }
  edits.RemoveFirst(result.locked + result.missing);
  return result;
}

}  // namespace varnlog::logview
