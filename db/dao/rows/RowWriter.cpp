#include "db/dao/rows/RowWriter.h"

#include "db/dao/ChangeJournal.h"
#include "db/dao/sql/JetSql.h"
#include "db/dao/storage/Storage.h"

namespace varnlog::dao {

namespace {

void SetDefault(CopyBuffer::Cell& cell, const Value& value) {
  cell.kind = CellKind::kNull;
  cell.text.clear();
  if (const auto* const text = std::get_if<std::string>(&value)) {
    cell.kind = CellKind::kText;
    cell.text.assign(*text);
  } else if (const auto* const flag = std::get_if<bool>(&value)) {
    cell.kind = CellKind::kInteger;
    cell.integer = *flag ? 1 : 0;
  } else if (const auto* const number = std::get_if<std::int64_t>(&value)) {
    cell.kind = CellKind::kInteger;
    cell.integer = *number;
  }
}

[[noreturn]] void ThrowDeleted() {
  throw EngineError(ErrorNumber::kRecordDeleted, "The record has been deleted.");
}

}  // namespace

RowWriter::RowWriter(std::shared_ptr<Storage> storage, std::shared_ptr<const TableSchema> table,
                     std::vector<std::size_t> ordinals)
    : storage_(std::move(storage)),
      database_(std::make_unique<Database>(storage_)),
      table_(std::move(table)),
      ordinals_(std::move(ordinals)) {}

RowWriter::~RowWriter() = default;

std::string RowWriter::FieldList() const {
  std::string list;
  for (std::size_t i = 0; i < ordinals_.size(); ++i)
    list += (i == 0 ? "" : ", ") + QuoteIdentifier(FieldAt(i).name);
  return list;
}

void RowWriter::BeginAdd(CopyBuffer& buffer) {
  storage_->RequireWritable();
  buffer.Open(CopyBuffer::State::kAdding, ordinals_.size());
  for (std::size_t i = 0; i < ordinals_.size(); ++i) SetDefault(buffer[i], table_->defaults[ordinals_[i]]);
}

std::int64_t RowWriter::Add(CopyBuffer& buffer) {
  WriteScope scope(*storage_);
  const std::int64_t rowId = Insert(buffer);
  if (Journal() != nullptr) TellAdded(buffer, rowId);
  scope.Commit();
  buffer.Close();
  return rowId;
}

ChangeJournal* RowWriter::Journal() const {
  ChangeJournal* const journal = storage_->Journal();
  return journal != nullptr && SameName(journal->Table(), table_->name) ? journal : nullptr;
}

void RowWriter::TellAdded(const CopyBuffer& buffer, std::int64_t rowId) {
  if (buffer.size() != table_->fields.size())
    throw EngineError(ErrorNumber::kNotSupported,
                      "Rows are added to '" + table_->name + "' with all their fields only.");
  added_.resize(buffer.size());
  for (std::size_t i = 0; i < buffer.size(); ++i) {
    CellView& value = added_[ordinals_[i]];
    value = buffer[i].View();
    if (table_->fields[ordinals_[i]].isCounter)
      value = {.kind = CellKind::kInteger, .integer = rowId, .real = 0, .text = {}};
  }
  Journal()->RowAdded(*database_, table_->fields, added_);
}

void RowWriter::TellChanging(const CopyBuffer& buffer) {
  const std::shared_ptr<const RowSet> stored = Read(editedRow_);
  if (stored->IsDeleted(0)) ThrowDeleted();
  for (std::size_t i = 0; i < buffer.size(); ++i) {
    if (!buffer[i].isChanged) continue;
    const CellView before = stored->At(0, i);
    const CellView after = buffer[i].View();
    const bool isSame = before.kind == after.kind && before.text == after.text &&
                        (after.kind != CellKind::kInteger || before.integer == after.integer);
    if (!isSame)
      Journal()->FieldChanging(*database_, editedRow_, table_->fields[ordinals_[i]], before, after);
  }
}

void RowWriter::BeginEdit(CopyBuffer& buffer, std::int64_t rowId, const RowView& shown) {
  storage_->RequireWritable();
  heldSinceEdit_ = storage_->InWork();
  std::shared_ptr<const RowSet> stored = Read(rowId);
  if (stored->IsDeleted(0)) ThrowDeleted();
  editedRow_ = rowId;
  seen_ = {stored, 0};
  buffer.Open(CopyBuffer::State::kEditing, ordinals_.size());
  for (std::size_t i = 0; i < ordinals_.size(); ++i) buffer[i].Set(stored->At(0, i));
  if (!shown || shown.IsDeleted()) return;
  seen_ = shown;
  heldSinceEdit_ = false;
}

void RowWriter::RequireUnchanged(const CopyBuffer& buffer) {
  if (heldSinceEdit_) return;
  const std::shared_ptr<const RowSet> stored = Read(editedRow_);
  if (stored->IsDeleted(0)) ThrowDeleted();
  for (std::size_t i = 0; i < buffer.size(); ++i)
    if (buffer[i].isChanged && !(stored->At(0, i) == seen_.At(i)))
      throw EngineError(ErrorNumber::kDataChanged, "Another user has changed the field '" +
                                                       table_->fields[ordinals_[i]].name +
                                                       "' of this record meanwhile.");
}

void RowWriter::Change(CopyBuffer& buffer) {
  if (!buffer.IsChanged()) return buffer.Close();
  WriteScope scope(*storage_);
  RequireUnchanged(buffer);
  if (Journal() != nullptr) {
    ChangeScope change(*storage_);
    TellChanging(buffer);
    OverwriteEdited(buffer);
    change.Keep();
  } else {
    OverwriteEdited(buffer);
  }
  scope.Commit();
  buffer.Close();
}

void RowWriter::OverwriteEdited(const CopyBuffer& buffer) {
  if (!Overwrite(buffer, editedRow_)) ThrowDeleted();
}

}  // namespace varnlog::dao
