#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "db/dao/rows/RowFields.h"
#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/Schema.h"

namespace varnlog::dao {

class Database;

/// Adds rows to a table and changes them. The copy buffer's fields are the given fields of the table.
class RowWriter {
 public:
  /// `ordinals`: which of the table's fields each field of the record set is.
  RowWriter(std::shared_ptr<Connection> connection, std::shared_ptr<const TableSchema> table,
            std::vector<std::size_t> ordinals);
  ~RowWriter();
  RowWriter(const RowWriter&) = delete;
  RowWriter& operator=(const RowWriter&) = delete;

  /// Opens the buffer for a new row with the table's defaults.
  void BeginAdd(CopyBuffer& buffer);
  /// Adds the row; the result is its row id.
  std::int64_t Add(CopyBuffer& buffer);

  /// Opens the buffer with the row as it is stored now. The fields' values as the user saw them are kept:
  /// `shown`, where another user has changed the row since it was read, else the stored ones. Throws
  /// kRecordDeleted.
  void BeginEdit(CopyBuffer& buffer, std::int64_t rowId, const RowSet* shown = nullptr,
                 std::size_t shownRow = 0);
  /// Writes the changed fields. Throws kDataChanged when another user changed one of them meanwhile, and
  /// kRecordDeleted.
  void Change(CopyBuffer& buffer);

  /// One row as it is stored; IsDeleted() of its only row when there is none.
  [[nodiscard]] std::shared_ptr<const RowSet> Read(std::int64_t rowId);

 private:
  [[nodiscard]] std::string FieldNamed(std::size_t ordinal) const;
  [[nodiscard]] std::string FieldList() const;
  Statement& InsertStatement();
  [[nodiscard]] bool IsCounterUsedUp();
  void BindForInsert(const CopyBuffer& buffer);
  /// Who is to hear of changes of this table, or nullptr.
  [[nodiscard]] ChangeJournal* Journal() const;
  void TellAdded(const CopyBuffer& buffer, std::int64_t rowId);
  void TellChanging(const CopyBuffer& buffer);
  Statement& UpdateStatement(const CopyBuffer& buffer);
  void RunUpdate(const CopyBuffer& buffer);
  void RequireUnchanged(const CopyBuffer& buffer);

  std::shared_ptr<Connection> connection_;
  std::unique_ptr<Database> database_;  // as the journal of changes knows it
  std::shared_ptr<const TableSchema> table_;
  std::vector<std::size_t> ordinals_;
  Statement read_;
  // What a parameter of the insert holds: a text by its place, whatever stands there.
  struct Bound {
    CellKind kind = CellKind::kDeleted;  // never bound
    std::int64_t integer = 0;
    const char* text = nullptr;
    std::size_t length = 0;
    friend bool operator==(const Bound&, const Bound&) = default;
  };

  Statement insert_;
  std::vector<Bound> bound_;
  std::vector<CellView> added_;
  std::unordered_map<std::vector<bool>, Statement> updates_;  // by the set of fields they write

  std::int64_t editedRow_ = 0;
  std::shared_ptr<const RowSet> seen_;  // the row as the user saw it
  std::size_t seenRow_ = 0;
  bool heldSinceEdit_ = false;  // nobody else can have changed the row since Edit
};

}  // namespace varnlog::dao
