#include <algorithm>
#include <utility>

#include "db/dao/TableScan.h"
#include "db/dao/ValueIndex.h"
#include "db/dao/postgres/ServerSchema.h"
#include "db/dao/postgres/ServerStorage.h"
#include "db/dao/rows/ValueColumns.h"
#include "db/dao/sql/JetSql.h"

namespace varnlog::dao {

namespace {

std::string FieldNamed(const TableSchema& table, std::string_view name) {
  const auto ordinal = table.FieldAt(name);
  if (!ordinal)
    throw EngineError(ErrorNumber::kTooFewParameters,
                      "'" + std::string(name) + "' is no field of '" + table.name + "'.");
  return QuoteIdentifier(table.fields[*ordinal].name);
}

/// Slices of rows, each of which begins behind the last row of the one before.
class ServerScan final : public TableScan {
 public:
  ServerScan(std::shared_ptr<ServerStorage> storage, std::string_view table,
             std::span<const std::string> fields, ScanRange range)
      : TableScan(fields.size()), storage_(std::move(storage)), range_(std::move(range)) {
    const auto schema = storage_->Table(table);
    key_ = QuoteIdentifier(ServerStorage::KeyField(*schema));
    order_ = range_.order.empty() ? key_ : FieldNamed(*schema, range_.order);
    columns_ = key_ + ", " + order_;
    for (const std::string& field : fields) columns_ += ", " + FieldNamed(*schema, field);
    name_ = QuoteIdentifier(schema->name);
  }

  [[nodiscard]] bool Next() override {
    if (isEnd_) return false;
    if (slice_ == nullptr || row_ + 1 == slice_->RowCount()) {
      if (isLast_)
        End();
      else
        Fetch();
      if (isEnd_) return false;
    }
    ++row_;
    for (std::size_t i = 0; i < values_.size(); ++i) values_[i] = slice_->Cell(row_, static_cast<int>(i) + 2);
    return true;
  }

 private:
  void Fetch() {
    // One row needs nothing that holds it together with others.
    const bool isSingle = range_.order.empty() && range_.first == range_.last;
    if (reading_ == nullptr && !isSingle) reading_ = std::make_unique<ReadingScope>(*storage_);
    slice_ = std::make_unique<ServerResult>(slice_ == nullptr && range_.order.empty() ? FirstSlice()
                                                                                      : NextSlice());
    isLast_ = slice_->RowCount() < limit_;
    limit_ = kSlice;
    row_ = -1;
    if (slice_->RowCount() == 0) End();
  }

  // Short scans, by which a change begins and ends, are the same statement each time.
  [[nodiscard]] ServerResult FirstSlice() {
    const NumberText first(range_.first);
    const NumberText last(range_.last);
    return storage_->Run(Select("$1::bigint AND $2::bigint", ""), {first.View(), last.View()});
  }
  [[nodiscard]] ServerResult NextSlice() {
    std::string behind;
    if (slice_ != nullptr) {
      const int last = slice_->RowCount() - 1;
      behind = " AND (" + order_ + ", " + key_ + ") > (" + std::to_string(slice_->Number(last, 1)) + ", " +
               std::to_string(slice_->Number(last, 0)) + ")";
    }
    return storage_->RunOnce(
        Select(std::to_string(range_.first) + " AND " + std::to_string(range_.last), behind));
  }
  [[nodiscard]] std::string Select(const std::string& bounds, const std::string& behind) const {
    return "SELECT " + columns_ + " FROM " + name_ + " WHERE " + order_ + " BETWEEN " + bounds + behind +
           " ORDER BY " + order_ + (range_.order.empty() ? "" : ", " + key_) + " LIMIT " +
           std::to_string(limit_);
  }

  void End() {
    isEnd_ = true;
    slice_.reset();
    reading_.reset();
  }

  static constexpr int kFirstSlice = 512;
  static constexpr int kSlice = 8192;

  std::shared_ptr<ServerStorage> storage_;
  ScanRange range_;
  std::string key_;
  std::string order_;
  std::string columns_;
  std::string name_;
  std::unique_ptr<ReadingScope> reading_;
  std::unique_ptr<ServerResult> slice_;
  int limit_ = kFirstSlice;
  int row_ = -1;  // the one before the next
  bool isLast_ = false;
  bool isEnd_ = false;
};

/// In the server's SQL.
std::string IndexExpression(const TableSchema& table, const IndexedColumn& column) {
  const auto text = [&table](const std::string& field) {
    return "coalesce(" + FieldNamed(table, field) + "::text, '')";
  };
  std::string number;
  for (std::size_t i = 0; i < column.openFlags.size(); ++i)
    number += (i == 0 ? "(" : " + ") + std::string("(") + FieldNamed(table, column.openFlags[i]) +
              " <> 0 AND " + text(column.fields[i]) + " = '')::int * " + std::to_string(1U << i);
  std::string expression = number.empty() ? "" : number + ")::text";
  for (std::size_t i = column.openFlags.size(); i < column.fields.size(); ++i)
    expression += (expression.empty() ? "" : " || chr(" + std::to_string(kValueDivider) + ") || ") +
                  text(column.fields[i]);
  return expression;
}

class ServerValueIndex final : public ValueIndex {
 public:
  ServerValueIndex(std::shared_ptr<ServerStorage> storage, std::string_view table,
                   std::span<const IndexedColumn> columns)
      : ValueIndex(columns.size()), storage_(std::move(storage)) {
    const auto schema = storage_->Table(table);
    key_ = QuoteIdentifier(ServerStorage::KeyField(*schema));
    columns_ = key_;
    for (const IndexedColumn& column : columns) columns_ += ", " + IndexExpression(*schema, column);
    name_ = QuoteIdentifier(schema->name);
    next_ = std::min(storage_->Run("SELECT max(" + key_ + ") FROM " + name_).Number(0, 0), kMostCounter);
    begun_ = storage_->RecentStamp();
  }

  bool Read(std::int64_t rows) override {
    if (IsComplete()) return true;
    const ServerResult slice =
        storage_->RunOnce("SELECT " + columns_ + " FROM " + name_ + " WHERE " + key_ + " BETWEEN 0 AND " +
                          std::to_string(next_) + " ORDER BY " + key_ + " DESC LIMIT " +
                          std::to_string(std::max<std::int64_t>(rows, 1)));
    for (int row = 0; row < slice.RowCount(); ++row)
      Columns().Add(slice.Number(row, 0),
                    [&](std::size_t column) { return slice.Text(row, static_cast<int>(column) + 1); });
    if (slice.RowCount() == 0)
      SetComplete();
    else
      next_ = slice.Number(slice.RowCount() - 1, 0) - 1;
    return IsComplete();
  }

  [[nodiscard]] bool IsCurrent() const override {
    return storage_->IsOpen() && storage_->RecentStamp() == begun_;
  }

 private:
  std::shared_ptr<ServerStorage> storage_;
  std::string key_;
  std::string columns_;
  std::string name_;
  RowStamp begun_;
  std::int64_t next_ = 0;  // the greatest number that was not looked at yet
};

}  // namespace

std::unique_ptr<TableScan> ServerStorage::Scan(std::string_view table, std::span<const std::string> fields,
                                               const ScanRange& range) {
  return std::make_unique<ServerScan>(std::static_pointer_cast<ServerStorage>(shared_from_this()), table,
                                      fields, range);
}

std::unique_ptr<ValueIndex> ServerStorage::IndexValues(std::string_view table,
                                                       std::span<const IndexedColumn> columns) {
  return std::make_unique<ServerValueIndex>(std::static_pointer_cast<ServerStorage>(shared_from_this()),
                                            table, columns);
}

std::int64_t ServerStorage::Greatest(std::string_view table, std::string_view field) {
  const auto schema = Table(table);
  return NumberFrom(*schema, "max(" + FieldNamed(*schema, field) + ")").value_or(0);
}

std::vector<IdRange> ServerStorage::UnusedIds(std::string_view table) {
  const auto schema = Table(table);
  std::vector<IdRange> unused;
  if (!std::ranges::any_of(schema->fields, [](const FieldDef& field) { return field.isCounter; }))
    return unused;
  const ReadingScope scope(*this);
  const std::string key = QuoteIdentifier(KeyField(*schema));
  const ServerResult gaps = RunOnce(
      "SELECT id + 1, next - 1 FROM (SELECT id, lead(id) OVER (ORDER BY id) AS next FROM (SELECT 0 AS id "
      "UNION "
      "ALL SELECT " +
      key + " FROM " + QuoteIdentifier(schema->name) + " WHERE " + key +
      " > 0 UNION ALL SELECT greatest(value, (SELECT max(" + key + ") FROM " + QuoteIdentifier(schema->name) +
      ")) + 1 FROM varnlog_state WHERE name = " + QuoteText(schema->name) +
      ") AS ids) AS pairs WHERE next > id + 1 ORDER BY id");
  for (int row = 0; row < gaps.RowCount(); ++row)
    unused.push_back({gaps.Number(row, 0), gaps.Number(row, 1)});
  return unused;
}

}  // namespace varnlog::dao
