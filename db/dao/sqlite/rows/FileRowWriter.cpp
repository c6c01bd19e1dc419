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

Statement& FileRowWriter::InsertStatement() {
  if (insert_.IsPrepared()) return insert_;
  std::string values;
  for (std::size_t i = 0; i < FieldCount(); ++i) values += i == 0 ? "?" : ",?";
  insert_ = Statement(storage_->File(), "INSERT OR FAIL INTO " + QuoteIdentifier(Table().name) + " (" +
                                            FieldList() + ") VALUES (" + values + ")");
  return insert_;
}

// From row to row most parameters stay as they are: flags repeat, and texts are at the same place.
void FileRowWriter::BindForInsert(const CopyBuffer& buffer) {
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

std::int64_t FileRowWriter::Insert(const CopyBuffer& buffer) {
  BindForInsert(buffer);
  try {
    insert_.Run();
  } catch (const EngineError& error) {
    if (error.number() != ErrorNumber::kNotEnoughDiskSpace || !IsCounterUsedUp()) throw;
    throw EngineError(ErrorNumber::kRuleViolated,
                      "The counter of the table '" + Table().name + "' is used up by a wrong number.");
  }
  return sqlite3_last_insert_rowid(storage_->File().Handle());
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
