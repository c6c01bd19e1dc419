#include "db/dao/rows/RowWriter.h"

#include <sqlite3.h>

#include "db/dao/ChangeJournal.h"
#include "db/dao/DBEngine.h"
#include "db/dao/sql/JetSql.h"

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

RowWriter::RowWriter(std::shared_ptr<Connection> connection, std::shared_ptr<const TableSchema> table,
                     std::vector<std::size_t> ordinals)
    : connection_(std::move(connection)),
      database_(std::make_unique<Database>(connection_)),
      table_(std::move(table)),
      ordinals_(std::move(ordinals)) {}

RowWriter::~RowWriter() = default;

std::string RowWriter::FieldNamed(std::size_t ordinal) const {
  return QuoteIdentifier(table_->fields[ordinals_[ordinal]].name);
}

std::string RowWriter::FieldList() const {
  std::string list;
  for (std::size_t i = 0; i < ordinals_.size(); ++i) list += (i == 0 ? "" : ", ") + FieldNamed(i);
  return list;
}

std::shared_ptr<const RowSet> RowWriter::Read(std::int64_t rowId) {
  if (!read_.IsPrepared())
    read_ = Statement(*connection_, "SELECT " + FieldList() + " FROM " + QuoteIdentifier(table_->name) +
                                        " WHERE rowid = ?1");
  auto row = std::make_shared<RowSet>(ordinals_.size());
  ResetAtEnd reset(read_);
  read_.Bind(1, rowId);
  if (read_.Step())
    row->Append(read_);
  else
    row->AppendDeleted();
  return row;
}

void RowWriter::BeginAdd(CopyBuffer& buffer) {
  connection_->RequireWritable();
  buffer.Open(CopyBuffer::State::kAdding, ordinals_.size());
  for (std::size_t i = 0; i < ordinals_.size(); ++i) SetDefault(buffer[i], table_->defaults[ordinals_[i]]);
}

Statement& RowWriter::InsertStatement() {
  if (insert_.IsPrepared()) return insert_;
  std::string values;
  for (std::size_t i = 0; i < ordinals_.size(); ++i) values += i == 0 ? "?" : ",?";
  insert_ = Statement(*connection_, "INSERT OR FAIL INTO " + QuoteIdentifier(table_->name) + " (" +
                                        FieldList() + ") VALUES (" + values + ")");
  return insert_;
}

// From row to row most parameters stay as they are: flags repeat, and texts are at the same place.
void RowWriter::BindForInsert(const CopyBuffer& buffer) {
  Statement& insert = InsertStatement();
  bound_.resize(buffer.size());
  for (std::size_t i = 0; i < buffer.size(); ++i) {
    const CopyBuffer::Cell& cell = buffer[i];
    Bound wanted;
    wanted.kind = cell.kind;
    if (cell.kind == CellKind::kInteger) wanted.integer = cell.integer;
    if (cell.kind == CellKind::kText) {
      wanted.text = cell.text.data();
      wanted.length = cell.text.size();
    }
    if (wanted == bound_[i] && cell.kind != CellKind::kReal) continue;
    bound_[i] = {};
    insert.Bind(static_cast<int>(i) + 1, cell.View());
    bound_[i] = wanted;
  }
}

// The storage calls it a full disk.
bool RowWriter::IsCounterUsedUp() {
  Statement find(*connection_, "SELECT count(*) FROM " + QuoteIdentifier(table_->name) +
                                   " WHERE rowid = 9223372036854775807");
  ResetAtEnd reset(find);
  return find.Step() && find.Number(0) > 0;
}

std::int64_t RowWriter::Add(CopyBuffer& buffer) {
  WriteScope scope(*connection_);
  BindForInsert(buffer);
  try {
    insert_.Run();
  } catch (const EngineError& error) {
    if (error.number() != ErrorNumber::kNotEnoughDiskSpace || !IsCounterUsedUp()) throw;
    throw EngineError(ErrorNumber::kRuleViolated,
                      "The counter of the table '" + table_->name + "' is used up by a wrong number.");
  }
  const std::int64_t rowId = sqlite3_last_insert_rowid(connection_->Handle());
  if (Journal() != nullptr) TellAdded(buffer, rowId);
  scope.Commit();
  buffer.Close();
  return rowId;
}

ChangeJournal* RowWriter::Journal() const {
  ChangeJournal* const journal = connection_->Journal();
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

void RowWriter::BeginEdit(CopyBuffer& buffer, std::int64_t rowId, const RowSet* shown, std::size_t shownRow) {
  connection_->RequireWritable();
  heldSinceEdit_ = connection_->InWork();
  std::shared_ptr<const RowSet> stored = Read(rowId);
  if (stored->IsDeleted(0)) ThrowDeleted();
  editedRow_ = rowId;
  seen_ = stored;
  seenRow_ = 0;
  buffer.Open(CopyBuffer::State::kEditing, ordinals_.size());
  for (std::size_t i = 0; i < ordinals_.size(); ++i) buffer[i].Set(stored->At(0, i));
  if (shown == nullptr || shown->IsDeleted(shownRow)) return;
  seen_ = std::make_shared<const RowSet>(*shown);
  seenRow_ = shownRow;
  heldSinceEdit_ = false;
}

Statement& RowWriter::UpdateStatement(const CopyBuffer& buffer) {
  std::vector<bool> changed(buffer.size());
  for (std::size_t i = 0; i < buffer.size(); ++i) changed[i] = buffer[i].isChanged;
  Statement& update = updates_[changed];
  if (update.IsPrepared()) return update;
  std::string settings;
  for (std::size_t i = 0; i < buffer.size(); ++i)
    if (changed[i]) settings += (settings.empty() ? "" : ", ") + FieldNamed(i) + " = ?";
  update = Statement(*connection_, "UPDATE OR FAIL " + QuoteIdentifier(table_->name) + " SET " + settings +
                                       " WHERE rowid = ?");
  return update;
}

void RowWriter::RequireUnchanged(const CopyBuffer& buffer) {
  if (heldSinceEdit_) return;
  const std::shared_ptr<const RowSet> stored = Read(editedRow_);
  if (stored->IsDeleted(0)) ThrowDeleted();
  for (std::size_t i = 0; i < buffer.size(); ++i)
    if (buffer[i].isChanged && !(stored->At(0, i) == seen_->At(seenRow_, i)))
      throw EngineError(ErrorNumber::kDataChanged, "Another user has changed the field '" +
                                                       table_->fields[ordinals_[i]].name +
                                                       "' of this record meanwhile.");
}

void RowWriter::Change(CopyBuffer& buffer) {
  if (!buffer.IsChanged()) return buffer.Close();
  WriteScope scope(*connection_);
  RequireUnchanged(buffer);
  if (Journal() != nullptr) {
    ChangeScope change(*connection_);
    TellChanging(buffer);
    RunUpdate(buffer);
    change.Keep();
  } else {
    RunUpdate(buffer);
  }
  scope.Commit();
  buffer.Close();
}

void RowWriter::RunUpdate(const CopyBuffer& buffer) {
  Statement& update = UpdateStatement(buffer);
  int parameter = 0;
  for (std::size_t i = 0; i < buffer.size(); ++i)
    if (buffer[i].isChanged) update.Bind(++parameter, buffer[i].View());
  update.Bind(parameter + 1, editedRow_);
  update.Run();
  if (sqlite3_changes(connection_->Handle()) == 0) ThrowDeleted();
}

}  // namespace varnlog::dao
