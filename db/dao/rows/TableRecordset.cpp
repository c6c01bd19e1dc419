#include "db/dao/rows/TableRecordset.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <utility>

namespace varnlog::dao {

std::vector<std::size_t> TableRecordset::AllOrdinals(const TableSchema& table) {
  std::vector<std::size_t> ordinals(table.fields.size());
  std::iota(ordinals.begin(), ordinals.end(), std::size_t{0});
  return ordinals;
}

TableRecordset::TableRecordset(std::shared_ptr<const TableSchema> table, std::unique_ptr<RowWriter> writer)
    : table_(std::move(table)), fields_({table_, &table_->fields}, *this), writer_(std::move(writer)) {}

void TableRecordset::GoToFirst() {
  GoTo(FirstId());
  isEmpty_ = !rowId_.has_value();
}

Field& TableRecordset::Fields(std::size_t ordinal) {
  if (ordinal < fields_.size()) return fields_[ordinal];
  throw EngineError(ErrorNumber::kItemNotFound,
                    "The table has no field number " + std::to_string(ordinal) + ".");
}

bool TableRecordset::IsBOF() const {
  return isEmpty_;
}
bool TableRecordset::IsEOF() const {
  return !rowId_.has_value() && !noMatch_;
}

void TableRecordset::GoTo(std::optional<std::int64_t> rowId) {
  fields_.Buffer().Close();
  rowId_ = rowId;
  row_.reset();
  isEmpty_ = false;
  noMatch_ = false;
}

std::int64_t TableRecordset::RequireRow() const {
  if (!rowId_) throw EngineError(ErrorNumber::kNoCurrentRecord, "There is no current record.");
  return *rowId_;
}

void TableRecordset::MoveFirst() {
  const auto first = FirstId();
  if (!first) throw EngineError(ErrorNumber::kNoCurrentRecord, "There is no current record.");
  GoTo(first);
}

void TableRecordset::MoveNext() {
  GoTo(IdBehind(RequireRow()));
}

CellView TableRecordset::CurrentCell(std::size_t ordinal) {
  if (row_ == nullptr) row_ = ReadRow(RequireRow());
  if (row_->IsDeleted(0)) throw EngineError(ErrorNumber::kRecordDeleted, "The record has been deleted.");
  return row_->At(0, ordinal);
}

void TableRecordset::AddNew() {
  writer_->BeginAdd(fields_.Buffer());
}

void TableRecordset::Edit() {
  writer_->BeginEdit(fields_.Buffer(), RequireRow());
}

void TableRecordset::Update() {
  CopyBuffer& buffer = fields_.Buffer();
  if (buffer.state() == CopyBuffer::State::kAdding) {
    writer_->Add(buffer);
    NoteAdded(buffer);
  } else if (buffer.state() == CopyBuffer::State::kEditing) {
    row_.reset();
    writer_->Change(buffer);
  } else {
    throw EngineError(ErrorNumber::kUpdateWithoutEdit, "Update comes after AddNew or Edit only.");
  }
}

void TableRecordset::SetIndex(std::string_view name) {
  if (index_ != nullptr && SameName(index_->name, name)) return;
  for (const Index& index : table_->indexes)
    if (SameName(index.name, name)) {
      UseIndex(index);
      index_ = &index;
      return;
    }
  throw EngineError(ErrorNumber::kItemNotFound,
                    "'" + std::string(name) + "' is no index of the table '" + table_->name + "'.");
}

void TableRecordset::Seek(std::string_view comparison, std::initializer_list<SeekKey> keys) {
  if (index_ == nullptr) throw EngineError(ErrorNumber::kNotSupported, "Seek needs an index to be set.");
  if (comparison != "=") throw EngineError(ErrorNumber::kNotSupported, "Seek compares with \"=\" only.");
  if (keys.size() == 0 || keys.size() > std::min(index_->fields.size(), kMostKeys))
    throw EngineError(ErrorNumber::kNotSupported,
                      "Seek takes as many values as its index has fields, or fewer.");
  const auto found = Find(keys);
  GoTo(found);
  noMatch_ = !found;
}

}  // namespace varnlog::dao
