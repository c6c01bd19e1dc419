#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "db/dao/rows/RowFields.h"
#include "db/dao/rows/RowSet.h"
#include "db/dao/storage/TableSchema.h"

namespace varnlog::dao {

class ChangeJournal;
class Database;
class Storage;

/// Adds rows to a table and changes them, so that no change of another user is written over and the journal
/// hears of every change; how a row is written is the storage's business. The copy buffer's fields are the
/// given fields of the table.
class RowWriter {
 public:
  /// `ordinals`: which of the table's fields each field of the record set is.
  RowWriter(std::shared_ptr<Storage> storage, std::shared_ptr<const TableSchema> table,
            std::vector<std::size_t> ordinals);
  virtual ~RowWriter();
  RowWriter(const RowWriter&) = delete;
  RowWriter& operator=(const RowWriter&) = delete;

  /// Opens the buffer for a new row with the table's defaults.
  void BeginAdd(CopyBuffer& buffer);
  /// Adds the row; the result is its row id.
  std::int64_t Add(CopyBuffer& buffer);

  /// Opens the buffer with the row as it is stored now. The fields' values as the user saw them are kept:
  /// `shown`, where another user has changed the row since it was read, else the stored ones. Throws
  /// kRecordDeleted.
  void BeginEdit(CopyBuffer& buffer, std::int64_t rowId, const RowView& shown = {});
  /// Writes the changed fields. Throws kDataChanged when another user changed one of them meanwhile, and
  /// kRecordDeleted.
  void Change(CopyBuffer& buffer);

  /// One row as it is stored; IsDeleted() of its only row when there is none.
  [[nodiscard]] virtual std::shared_ptr<const RowSet> Read(std::int64_t rowId) = 0;

 protected:
  /// Adds the row, within a transaction; the result is its row id.
  virtual std::int64_t Insert(const CopyBuffer& buffer) = 0;
  /// Writes the changed fields, within a transaction; false when there is no such row.
  virtual bool Overwrite(const CopyBuffer& buffer, std::int64_t rowId) = 0;

  [[nodiscard]] const TableSchema& Table() const { return *table_; }
  [[nodiscard]] const FieldDef& FieldAt(std::size_t ordinal) const {
    return table_->fields[ordinals_[ordinal]];
  }
  [[nodiscard]] std::size_t FieldCount() const { return ordinals_.size(); }
  /// All fields, quoted.
  [[nodiscard]] std::string FieldList() const;

 private:
  /// Who is to hear of changes of this table, or nullptr.
  [[nodiscard]] ChangeJournal* Journal() const;
  void TellAdded(const CopyBuffer& buffer, std::int64_t rowId);
  void TellChanging(const CopyBuffer& buffer);
  void OverwriteEdited(const CopyBuffer& buffer);
  void RequireUnchanged(const CopyBuffer& buffer);

  std::shared_ptr<Storage> storage_;
  std::unique_ptr<Database> database_;  // as the journal of changes knows it
  std::shared_ptr<const TableSchema> table_;
  std::vector<std::size_t> ordinals_;
  std::vector<CellView> added_;

  std::int64_t editedRow_ = 0;
  RowView seen_;                // the row as the user saw it
  bool heldSinceEdit_ = false;  // nobody else can have changed the row since Edit
};

}  // namespace varnlog::dao
