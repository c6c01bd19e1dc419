#include "logview/WriteRow.h"

#include <utility>

namespace varnlog::logview {

namespace {

using namespace core::literals;

/// Whether the row being edited still has this value open. The flag is written as it is, so that the engine
/// compares it once more under the lock of the transaction that writes the value.
bool HoldOpen(dao::Recordset& rows, std::string_view editFlag) {
  dao::Field& flag = rows.Fields(editFlag);
  if (!flag.Boolean()) return false;
  flag.SetBoolean(true);
  return true;
}

std::string RowId(dao::Recordset& rows) {
  return std::to_string(rows.Fields("tXrayCulIntIDPk").Number());
}

class RowWriter {
 public:
  RowWriter(dao::Recordset& rows, const core::TextLookup& texts, const intake::ToothScheme& scheme)
      : rows_(rows), texts_(texts), scheme_(scheme) {}

  /// False when a value is locked.
  bool Write(const EnteredValues& entered) {
    for (int column = 0; column < kColumnCount; ++column) {
      const auto& text = entered[static_cast<std::size_t>(column)];
      if (text && !WriteColumn(column, *text)) return false;
    }
    return true;
  }

  std::vector<CEdit> edits;
  std::vector<std::string> refused;

 private:
  bool WriteColumn(int column, const std::string& text) {
    const Column& target = kColumns[static_cast<std::size_t>(column)];
    if (target.field.empty()) {
      refused.push_back("Spalte " + std::to_string(column) + " darf nicht editiert werden");
      return true;
    }
    if (!target.editFlag.empty() && !HoldOpen(rows_, target.editFlag)) return false;
    dao::Field& field = rows_.Fields(target.field);
    CEdit edit{.ID = RowId(rows_), .Field = std::string(target.editFlag)};
    if (!field.IsNull()) edit.Before = field.Text();
    field.SetText(Stored(target.form, text));
    if (!target.editFlag.empty()) edits.push_back(std::move(edit));
    return true;
  }

  /// What is shown in this row, turned back into what is stored. A type entered in the same row is in place
  /// by now, because its column stands before the region's.
  [[nodiscard]] std::string Stored(Form form, const std::string& text) const {
    switch (form) {
      case Form::kPregnancy:
        return intake::PregnancyTextToCode(text, texts_);
      case Form::kRegion:
        return intake::ToothFromDisplay(text, rows_.Fields("tXraySType").Text(), scheme_);
      case Form::kRetake:
        return intake::RepeatTextToCode(text, texts_);
      default:
        return text;
    }
  }

  dao::Recordset& rows_;
  const core::TextLookup& texts_;
  const intake::ToothScheme& scheme_;
};

/// Edits the row with `change` and keeps it when that returns true, which is also the result.
template <typename Change>
bool EditRow(dao::Recordset& rows, dao::Bookmark location, const Change& change) {
  rows.SetBookmark(location);
  rows.Edit();
  try {
    const bool keeps = change();
    if (keeps)
      rows.Update();
    else
      rows.CancelUpdate();
    return keeps;
  } catch (const dao::EngineError&) {
    rows.CancelUpdate();
    throw;
  }
}

}  // namespace

RowWritten WriteRow(dao::Recordset& rows, dao::Bookmark location, const EnteredValues& entered,
                    const core::TextLookup& texts, const intake::ToothScheme& scheme, CEdits& edits) {
  RowWriter writer(rows, texts, scheme);
  if (!EditRow(rows, location, [&] { return writer.Write(entered); })) return {.isLocked = true};
  // Only now: a value that was not stored must not be locked either.
  for (CEdit& edit : writer.edits) edits.Add(std::move(edit));
  return {.refused = std::move(writer.refused)};
}

bool TakeEntryBack(dao::Recordset& rows, dao::Bookmark location, int column, CEdits& edits) {
  if (column < 0 || column >= kColumnCount) return false;
  const Column& target = kColumns[static_cast<std::size_t>(column)];
  std::string key;
  const bool done = EditRow(rows, location, [&] {
    key = CEdit{.ID = RowId(rows), .Field = std::string(target.editFlag)}.Key();
    const CEdit* edit = target.editFlag.empty() ? nullptr : edits.Find(key);
    if (edit == nullptr || !HoldOpen(rows, target.editFlag)) return false;
    dao::Field& field = rows.Fields(target.field);
    if (edit->Before)
      field.SetText(*edit->Before);
    else
      field.SetNull();
    return true;
  });
  if (done) edits.Remove(key);
  return done;
}

std::optional<core::TextKey> DataErrorKey(std::int32_t dataError) {
  switch (static_cast<DataError>(dataError)) {
    case DataError::kLocked:
      return "RS_ERR_CHANGE"_key;
    case DataError::kRecordInUse:
      return "RS_ERR_RECORDEX"_key;
    case DataError::kRecordDeleted:
      return "RS_ERR_RECDEL"_key;
    case DataError::kFieldLength:
      return "RS_ERR_FIELDLEN"_key;
  }
  return std::nullopt;
}

std::int32_t DataErrorOf(dao::ErrorNumber number) {
  switch (number) {
    case dao::ErrorNumber::kTooLongForField:
      return static_cast<std::int32_t>(DataError::kFieldLength);
    case dao::ErrorNumber::kRecordDeleted:
    case dao::ErrorNumber::kNoCurrentRecord:
      return static_cast<std::int32_t>(DataError::kRecordDeleted);
    case dao::ErrorNumber::kDataChanged:
    case dao::ErrorNumber::kFileInUse:
      return static_cast<std::int32_t>(DataError::kRecordInUse);
    default:
      return static_cast<std::int32_t>(number);
  }
}

}  // namespace varnlog::logview
