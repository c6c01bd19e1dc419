#include "db/dao/sqlite/rows/FileRowWriter.h"

#include <sqlite3.h>

#include "db/dao/sql/JetSql.h"

namespace varnlog::dao {

FileRowWriter::FileRowWriter(std::shared_ptr<FileStorage> storage, std::shared_ptr<const TableSchema> table,
                             std::vector<std::size_t> ordinals)
    : RowWriter(storage, std::move(table), std::move(ordinals)), storage_(std::move(storage)) {}

std::shared_ptr<const RowSet> FileRowWriter::Read(std::int64_t rowId) {
  if (!read_.IsPrepared())
    read_ = Statement(storage_->File(), "SELECT " + FieldList() + " FROM " + QuoteIdentifier(Table().name) +
                                            " WHERE rowid = ?1");
  auto row = std::make_shared<RowSet>(FieldCount());
  ResetAtEnd reset(read_);
  read_.Bind(1, rowId);
  if (read_.Step())
    AppendRow(*row, read_);
  else
    row->AppendDeleted();
  return row;
}

std::string FileRowWriter::InsertInto() const {
  return "INSERT OR FAIL INTO " + QuoteIdentifier(Table().name) + " (" + FieldList() + ") VALUES ";
}

std::string FileRowWriter::Parameters() const {
  std::string values = "(";
  for (std::size_t i = 0; i < FieldCount(); ++i) values += i == 0 ? "?" : ",?";
  return values + ")";
}

// The storage calls it a full disk.
bool FileRowWriter::IsCounterUsedUp() {
  Statement find(storage_->File(), "SELECT count(*) FROM " + QuoteIdentifier(Table().name) +
                                       " WHERE rowid = 9223372036854775807");
  ResetAtEnd reset(find);
  return find.Step() && find.Number(0) > 0;
}

Statement& FileRowWriter::UpdateStatement(const CopyBuffer& buffer) {
  std::vector<bool> changed(buffer.size());
  for (std::size_t i = 0; i < buffer.size(); ++i) changed[i] = buffer[i].isChanged;
  Statement& update = updates_[changed];
  if (update.IsPrepared()) return update;
  std::string settings;
  for (std::size_t i = 0; i < buffer.size(); ++i)
    if (changed[i]) settings += (settings.empty() ? "" : ", ") + QuoteIdentifier(FieldAt(i).name) + " = ?";
  update = Statement(storage_->File(), "UPDATE OR FAIL " + QuoteIdentifier(Table().name) + " SET " +
                                           settings + " WHERE rowid = ?");
  return update;
}

// Counters go up by one from the row that this writer added last, as long as nothing else was written since.
bool FileRowWriter::IsNextKnown(const CopyBuffer& buffer) const {
  if (!storage_->MayRowsWait() || lastId_ >= kMostCounter) return false;
  const ChangeWatch& watch = storage_->File().Watch();
  if (changes_ != watch.OwnChanges() || epoch_ != watch.Epoch()) return false;
  for (std::size_t i = 0; i < buffer.size(); ++i)
    if (FieldAt(i).isCounter) return buffer[i].kind == CellKind::kNull;
  return false;
}

void FileRowWriter::NoteLast(std::int64_t id) {
  const ChangeWatch& watch = storage_->File().Watch();
  lastId_ = id;
  changes_ = watch.OwnChanges();
  epoch_ = watch.Epoch();
}

std::int64_t FileRowWriter::InsertLater(const CopyBuffer& buffer) {
  Connection& file = storage_->File();
  if (held_ == nullptr) held_ = std::make_shared<HeldInserts>(file, InsertInto(), Parameters());
  file.Hold(held_);
  held_->Add(buffer.Cells(), lastId_ + 1);
  NoteLast(lastId_ + 1);
  if (held_->IsFull()) file.WriteHeld();
  return lastId_;
}

std::int64_t FileRowWriter::Insert(const CopyBuffer& buffer) {
  if (IsNextKnown(buffer)) return InsertLater(buffer);
  if (!insert_.IsPrepared()) insert_ = Statement(storage_->File(), InsertInto() + Parameters());
  bound_.Bind(insert_, 1, buffer.Cells());
  try {
    insert_.Run();
  } catch (const EngineError& error) {
    if (error.number() != ErrorNumber::kNotEnoughDiskSpace || !IsCounterUsedUp()) throw;
    throw EngineError(ErrorNumber::kRuleViolated,
                      "The counter of the table '" + Table().name + "' is used up by a wrong number.");
  }
  NoteLast(sqlite3_last_insert_rowid(storage_->File().Handle()));
  return lastId_;
}

bool FileRowWriter::Overwrite(const CopyBuffer& buffer, std::int64_t rowId) {
  Statement& update = UpdateStatement(buffer);
  int parameter = 0;
  for (std::size_t i = 0; i < buffer.size(); ++i)
    if (buffer[i].isChanged) update.Bind(++parameter, buffer[i].View());
  update.Bind(parameter + 1, rowId);
  update.Run();
  return sqlite3_changes(storage_->File().Handle()) > 0;
}

}  // namespace varnlog::dao
