#include <algorithm>
#include <utility>

#include <sqlite3.h>

#include "db/dao/ValueIndex.h"
#include "db/dao/rows/ValueColumns.h"
#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/FileStorage.h"
#include "db/dao/sqlite/Schema.h"
#include "db/dao/sqlite/Statement.h"
#include "db/dao/sqlite/rows/RowCollector.h"

namespace varnlog::dao {

namespace {

std::string Field(const TableSchema& table, const std::string& name) {
  if (!table.FieldAt(name)) throw EngineError(ErrorNumber::kTooFewParameters, "No field " + name + ".");
  return QuoteIdentifier(name);
}

/// In the storage's SQL.
std::string Expression(const TableSchema& table, const IndexedColumn& column) {
  if (column.fields.size() == 1 && column.openFlags.empty()) return Field(table, column.fields.front());
  const std::string divider = " || char(" + std::to_string(kValueDivider) + ") || ";
  std::string number;
  for (std::size_t i = 0; i < column.openFlags.size(); ++i) {
    number += (i == 0 ? "(" : " + ") + std::string("(") + Field(table, column.openFlags[i]) +
              " <> 0 AND ifnull(" + Field(table, column.fields[i]) + ", '') = '') * " +
              std::to_string(1U << i);
  }
  std::string text = number.empty() ? "" : number + ")";
  for (std::size_t i = column.openFlags.size(); i < column.fields.size(); ++i) {
    text += (text.empty() ? "" : divider) + "ifnull(" + Field(table, column.fields[i]) + ", '')";
  }
  return text;
}

/// The row's number and then a value for each column.
class IndexCollector final : public RowCollector {
 public:
  explicit IndexCollector(ValueColumns& columns) : columns_(columns) {}

  void Take(int /*count*/, sqlite3_value** values) override {
    columns_.Add(sqlite3_value_int64(values[0]), [values](std::size_t column) {
      sqlite3_value* const value = values[column + 1];
      const auto* const text = reinterpret_cast<const char*>(sqlite3_value_text(value));
      return std::string_view(text == nullptr ? "" : text,
                              static_cast<std::size_t>(sqlite3_value_bytes(value)));
    });
  }

 private:
  ValueColumns& columns_;
};

class FileValueIndex final : public ValueIndex {
 public:
  FileValueIndex(std::shared_ptr<FileStorage> storage, std::string_view table,
                 std::span<const IndexedColumn> columns);
  bool Read(std::int64_t rows) override;
  [[nodiscard]] bool IsCurrent() const override {
    return storage_->IsOpen() && storage_->File().Watch().Current() == begun_;
  }

 private:
  std::shared_ptr<FileStorage> storage_;
  std::string table_;
  std::string expressions_;
  RowStamp begun_;
  std::int64_t next_ = 0;  // the greatest number that was not looked at yet
};

FileValueIndex::FileValueIndex(std::shared_ptr<FileStorage> storage, std::string_view table,
                               std::span<const IndexedColumn> columns)
    : ValueIndex(columns.size()), storage_(std::move(storage)) {
  const auto schema = storage_->Table(table);
  table_ = QuoteIdentifier(schema->name);
  expressions_ = "rowid";
  for (const IndexedColumn& column : columns) expressions_ += ", " + Expression(*schema, column);
  Statement greatest(storage_->File(), "SELECT max(rowid) FROM " + table_);
  const ResetAtEnd reset(greatest);
  next_ = greatest.Step() ? std::min(greatest.Number(0), kMostCounter) : 0;
  begun_ = storage_->File().Watch().Current();
}

bool FileValueIndex::Read(std::int64_t rows) {
  if (IsComplete()) return true;
  // Numbers may lie far apart: what lies between two rows is jumped over.
  Statement nearest(storage_->File(), "SELECT max(rowid) FROM " + table_ + " WHERE rowid <= ?1");
  nearest.Bind(1, next_);
  const bool hasRow = nearest.Step() && nearest.ColumnType(0) != SQLITE_NULL;
  const std::int64_t last = hasRow ? nearest.Number(0) : 0;
  nearest.Reset();
  if (hasRow) {
    Statement scan(storage_->File(), CollectSql(expressions_, table_ + " WHERE rowid BETWEEN ?1 AND ?2", 3));
    scan.Bind(1, std::max<std::int64_t>(last - rows + 1, 0));
    scan.Bind(2, last);
    IndexCollector collector(Columns());
    Collect(scan, 3, collector);
    next_ = last - rows;
  }
  if (!hasRow) SetComplete();
  return IsComplete();
}

}  // namespace

std::unique_ptr<ValueIndex> FileStorage::IndexValues(std::string_view table,
                                                     std::span<const IndexedColumn> columns) {
  return std::make_unique<FileValueIndex>(Self(), table, columns);
}

}  // namespace varnlog::dao
