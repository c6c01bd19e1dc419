#include "logview/WriteRow.h"

#include <utility>

namespace varnlog::logview {

namespace {

using namespace core::literals;

class RowWriter {
 public:
  RowWriter(dao::Recordset& rows, const core::TextLookup& texts, const intake::ToothScheme& scheme)
      : rows_(rows), texts_(texts), scheme_(scheme) {}

  void Write(const RowBuffer& entered) {
    for (int column = 0; column < kColumnCount; ++column) {
      const auto& text = entered[static_cast<std::size_t>(column)];
      if (text) WriteColumn(column, *text);
    }
  }

  std::vector<CEdit> edits;
  std::vector<std::string> refused;

 private:
  void WriteColumn(int column, const std::string& text) {
    const Column& target = kColumns[static_cast<std::size_t>(column)];
    if (target.field.empty()) {
      refused.push_back("Spalte " + std::to_string(column) + " darf nicht editiert werden");
      return;
    }
    rows_.Fields(target.field).SetText(Stored(column, text));
    if (target.editFlag.empty()) return;
    edits.push_back({.ID = std::to_string(rows_.Fields("tXrayCulIntIDPk").Number()),
                     .Field = std::string(target.editFlag)});
  }

  /// What is shown in this row, turned back into what is stored. A type entered in the same row is in place
  /// by now, because its column stands before the region's.
  [[nodiscard]] std::string Stored(int column, const std::string& text) const {
    switch (column) {
      case kPregnancyColumn:
        return intake::PregnancyTextToCode(text, texts_);
      case kRegionColumn:
        return intake::ToothFromDisplay(text, rows_.Fields("tXraySType").Text(), scheme_);
      case kRetakeColumn:
        return intake::RepeatTextToCode(text, texts_);
      default:
        return text;
    }
  }

  dao::Recordset& rows_;
  const core::TextLookup& texts_;
  const intake::ToothScheme& scheme_;
};

}  // namespace

std::vector<std::string> WriteRow(dao::Recordset& rows, dao::Bookmark location, const RowBuffer& entered,
                                  const core::TextLookup& texts, const intake::ToothScheme& scheme,
                                  CEdits& edits) {
  rows.SetBookmark(location);
  rows.Edit();
  RowWriter writer(rows, texts, scheme);
  try {
    writer.Write(entered);
    rows.Update();
  } catch (const dao::EngineError&) {
    rows.CancelUpdate();
    throw;
  }
  // Only now: a value that was not stored must not be locked either.
  for (CEdit& edit : writer.edits) edits.Add(std::move(edit));
  return std::move(writer.refused);
}

std::optional<core::TextKey> DataErrorKey(std::int32_t dataError) {
  switch (static_cast<DataError>(dataError)) {
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
