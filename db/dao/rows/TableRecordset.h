#pragma once

#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "db/dao/Recordset.h"
#include "db/dao/rows/RowFields.h"
#include "db/dao/rows/RowWriter.h"

namespace varnlog::dao {

/// One table, its rows found through an index.
class TableRecordset final : public Recordset, private RowSource {
 public:
  TableRecordset(std::shared_ptr<Connection> connection, std::shared_ptr<const TableSchema> table);

  [[nodiscard]] RecordsetType Type() const override { return RecordsetType::kTable; }
  [[nodiscard]] std::size_t FieldCount() const override { return fields_.size(); }
  using Recordset::Fields;
  [[nodiscard]] Field& Fields(std::size_t ordinal) override;

  [[nodiscard]] bool IsBOF() const override;
  [[nodiscard]] bool IsEOF() const override;
  void MoveFirst() override;
  void MoveNext() override;
  [[nodiscard]] std::int64_t RecordCount() const override;

  void AddNew() override;
  void Edit() override;
  void Update() override;
  void CancelUpdate() override { fields_.Buffer().Close(); }

  void SetIndex(std::string_view name) override;
  void Seek(std::string_view comparison, std::initializer_list<SeekKey> keys) override;
  [[nodiscard]] bool NoMatch() const override { return noMatch_; }

 private:
  struct SeekPath {
    Index index;
    std::vector<Statement> byKeyCount;
    // Rows are mostly added in the order of time, so a date that is later than all others is not looked for.
    std::size_t dateKey = 0;    // which of the index's fields is the date, if it has one
    std::size_t dateField = 0;  // that field's place in the table
    bool hasDate = false;
    Statement latest;
    std::string latestDate;     // "" in an empty table
    std::int64_t changes = -1;  // of the connection when it was found out ...
    std::int64_t epoch = -1;    // ... in this transaction
  };

  [[nodiscard]] CellView CurrentCell(std::size_t ordinal) override;
  void GoTo(std::optional<std::int64_t> rowId);
  [[nodiscard]] std::optional<std::int64_t> NextId(Statement& statement, std::int64_t after);
  [[nodiscard]] std::int64_t RequireRow() const;
  Statement& SeekStatement(std::size_t keyCount);
  void AddPath(const Index& index);
  [[nodiscard]] bool IsLaterThanAll(const SeekKey* keys, std::size_t keyCount);
  void NoteAdded();

  std::shared_ptr<Connection> connection_;
  std::shared_ptr<const TableSchema> table_;
  RowFields fields_;
  RowWriter writer_;
  Statement next_;
  std::list<SeekPath> paths_;
  SeekPath* path_ = nullptr;
  std::optional<std::int64_t> rowId_;
  std::shared_ptr<const RowSet> row_;  // empty until a value of the current row is asked for
  bool isEmpty_ = false;  // neither a row nor an edge was reached since the table was found empty
  bool noMatch_ = false;
};

}  // namespace varnlog::dao
