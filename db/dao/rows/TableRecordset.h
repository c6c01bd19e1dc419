#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "db/dao/Recordset.h"
#include "db/dao/rows/RowFields.h"
#include "db/dao/rows/RowWriter.h"
#include "db/dao/storage/TableSchema.h"

namespace varnlog::dao {

/// One table, its rows found through an index; how they are found is the storage's business.
class TableRecordset : public Recordset, private RowSource {
 public:
  [[nodiscard]] RecordsetType Type() const override { return RecordsetType::kTable; }
  [[nodiscard]] std::size_t FieldCount() const override { return fields_.size(); }
  using Recordset::Fields;
  [[nodiscard]] Field& Fields(std::size_t ordinal) override;

  [[nodiscard]] bool IsBOF() const override;
  [[nodiscard]] bool IsEOF() const override;
  void MoveFirst() override;
  void MoveNext() override;

  void AddNew() override;
  void Edit() override;
  void Update() override;
  void CancelUpdate() override { fields_.Buffer().Close(); }

  void SetIndex(std::string_view name) override;
  void Seek(std::string_view comparison, std::initializer_list<SeekKey> keys) override;
  [[nodiscard]] bool NoMatch() const override { return noMatch_; }

 protected:
  static constexpr std::size_t kMostKeys = 8;

  TableRecordset(std::shared_ptr<const TableSchema> table, std::unique_ptr<RowWriter> writer);

  /// To be called when the storage is ready to be asked: makes the first row current.
  void GoToFirst();

  [[nodiscard]] virtual std::optional<std::int64_t> FirstId() = 0;
  /// In the order of the primary key.
  [[nodiscard]] virtual std::optional<std::int64_t> IdBehind(std::int64_t id) = 0;
  /// `index` is one of the table's.
  virtual void UseIndex(const Index& index) = 0;
  /// Of several rows with these values of the index's first fields the oldest.
  [[nodiscard]] virtual std::optional<std::int64_t> Find(std::span<const SeekKey> keys) = 0;
  /// The row as it is shown.
  [[nodiscard]] virtual std::shared_ptr<const RowSet> ReadRow(std::int64_t id) { return writer_->Read(id); }
  /// A row was added through this record set; `buffer` still holds it.
  virtual void NoteAdded(const CopyBuffer& /*buffer*/) {}

  [[nodiscard]] RowWriter& Writer() { return *writer_; }
  [[nodiscard]] const TableSchema& Table() const { return *table_; }
  [[nodiscard]] static std::vector<std::size_t> AllOrdinals(const TableSchema& table);

 private:
  [[nodiscard]] CellView CurrentCell(std::size_t ordinal) override;
  void GoTo(std::optional<std::int64_t> rowId);
  [[nodiscard]] std::int64_t RequireRow() const;

  std::shared_ptr<const TableSchema> table_;
  RowFields fields_;
  std::unique_ptr<RowWriter> writer_;
  const Index* index_ = nullptr;
  std::optional<std::int64_t> rowId_;
  std::shared_ptr<const RowSet> row_;  // empty until a value of the current row is asked for
  bool isEmpty_ = false;  // neither a row nor an edge was reached since the table was found empty
  bool noMatch_ = false;
};

}  // namespace varnlog::dao
