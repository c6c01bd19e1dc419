#include "logview/PendingEdits.h"

#include <algorithm>
#include <charconv>

#include "logview/Columns.h"
#include "logview/RowDisplay.h"

namespace varnlog::logview {

using core::literals::operator""_key;

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

// More would not fit a message on a small screen.
constexpr std::size_t kMostDescribed = 10;

std::string Describe(const RowDisplay& display, int column, const core::TextLookup& texts) {
  const std::string value = display.Text(column);
  return display.Text(kPatientColumn) + ", " + display.Text(kDateColumn) + ": " +
         ColumnHeading(column, texts) + " " + (value.empty() ? texts.GetText("RC_EMPTYVALUE"_key) : value);
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

std::string DescribePending(dao::Database& log, const CEdits& edits, const core::TextLookup& texts,
                            const intake::ToothScheme& scheme, const platform::ShortDate& shortDate) {
  std::string lines;
  std::size_t described = 0;
  try {
    const auto rows = log.OpenRecordset(PendingRows(edits), dao::RecordsetType::kDynaset);
    const RowDisplay display(*rows, texts, scheme, shortDate);
    for (; !rows->IsEOF() && described < kMostDescribed; rows->MoveNext()) {
      const std::string id(rows->Fields("tXrayCulIntIDPk").Text());
      for (int column = 0; column < kColumnCount && described < kMostDescribed; ++column) {
        const std::string flag(kColumns.at(static_cast<std::size_t>(column)).editFlag);
        if (flag.empty() || !edits.Contains(CEdit{.ID = id, .Field = flag}.Key())) continue;
        lines.append(lines.empty() ? "" : "\n").append(Describe(display, column, texts));
        ++described;
      }
    }
  } catch (const dao::EngineError&) {
    // The question that these lines belong to is asked all the same.
    described = std::min(described, edits.Count());
  }
  if (described < edits.Count()) {
    lines.append("\n").append(
        core::FilledText(texts, "RC_MORE"_key, {{"lngCount", std::to_string(edits.Count() - described)}}));
  }
  return lines;
}

FlushResult FlushPendingEdits(dao::Database& log, CEdits& edits, core::UserDialog& user) {
  FlushResult result;
  if (edits.Count() == 0) return result;
  try {
    dao::ChangeGroup changes = log.BeginChanges();
    const auto rows = log.OpenRecordset("TXray", dao::RecordsetType::kTable);
    rows->SetIndex("PrimaryKey");
    LockAll(*rows, edits, user, result);
    changes.Commit();
  } catch (const dao::EngineError& error) {
    result = {};
    result.error = error;
  }
  edits.RemoveFirst(result.locked + result.missing);
  return result;
}

}  // namespace varnlog::logview
