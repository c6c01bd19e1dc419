#include "db/dao/ValueIndex.h"

#include <algorithm>
#include <utility>

#include <sqlite3.h>

#include "db/dao/DBEngine.h"
#include "db/dao/rows/RowCollector.h"
#include "db/dao/rows/ValueDictionary.h"
#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/Schema.h"
#include "db/dao/sqlite/Statement.h"

namespace varnlog::dao {

/// What is known so far, column by column.
struct ValueColumns final : RowCollector {
  explicit ValueColumns(std::size_t count) : dictionaries(count), codes(count), texts(count), hashes(count) {}

  /// The row's number and then a value for each column.
  void Take(int count, sqlite3_value** values) override {
    // Dictionaries do not fit into the processor's cache: each column's place is asked for before it is used.
    for (std::size_t i = 0; i + 1 < static_cast<std::size_t>(count); ++i) {
      sqlite3_value* const value = values[i + 1];
      const auto* const text = reinterpret_cast<const char*>(sqlite3_value_text(value));
      texts[i] = {text == nullptr ? "" : text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
      hashes[i] = ValueDictionary::HashOf(texts[i]);
      dictionaries[i].Aim(hashes[i]);
    }
    for (std::size_t i = 0; i < texts.size(); ++i) dictionaries[i].Approach(hashes[i]);
    for (std::size_t i = 0; i < texts.size(); ++i)
      Push(codes[i], dictionaries[i].Intern(texts[i], hashes[i]));
    Push(ids, static_cast<std::uint32_t>(sqlite3_value_int64(values[0])));
  }

  /// Grows by a quarter instead of to the double: of a million rows a half-empty array would be most of the
  /// memory.
  static void Push(std::vector<std::uint32_t>& numbers, std::uint32_t number) {
    if (numbers.size() == numbers.capacity()) numbers.reserve(numbers.size() + numbers.size() / 4 + 1024);
    numbers.push_back(number);
  }

  std::vector<ValueDictionary> dictionaries;
  std::vector<std::vector<std::uint32_t>> codes;  // a value's number for each row
  std::vector<std::uint32_t> ids;                 // counters have no more bits
  std::vector<std::string_view> texts;
  std::vector<std::uint32_t> hashes;
};

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

}  // namespace

ValueIndex::ValueIndex(std::shared_ptr<Connection> connection, std::string_view table,
                       std::span<const IndexedColumn> columns)
    : connection_(std::move(connection)), columns_(std::make_unique<ValueColumns>(columns.size())) {
  const auto schema = connection_->Table(table);
  table_ = QuoteIdentifier(schema->name);
  expressions_ = "rowid";
  for (const IndexedColumn& column : columns) expressions_ += ", " + Expression(*schema, column);
  Statement greatest(*connection_, "SELECT max(rowid) FROM " + table_);
  const ResetAtEnd reset(greatest);
  next_ = greatest.Step() ? std::min(greatest.Number(0), kMostCounter) : 0;
  begun_ = connection_->CurrentStamp();
}

ValueIndex::~ValueIndex() = default;

bool ValueIndex::IsCurrent() const {
  return connection_->IsOpen() && connection_->CurrentStamp() == begun_;
}

bool ValueIndex::Read(std::int64_t rows) {
  if (complete_) return true;
  // Numbers may lie far apart: what lies between two rows is jumped over.
  Statement nearest(*connection_, "SELECT max(rowid) FROM " + table_ + " WHERE rowid <= ?1");
  nearest.Bind(1, next_);
  const bool hasRow = nearest.Step() && nearest.ColumnType(0) != SQLITE_NULL;
  const std::int64_t last = hasRow ? nearest.Number(0) : 0;
  nearest.Reset();
  if (hasRow) {
    Statement scan(*connection_, CollectSql(expressions_, table_ + " WHERE rowid BETWEEN ?1 AND ?2", 3));
    scan.Bind(1, std::max<std::int64_t>(last - rows + 1, 0));
    scan.Bind(2, last);
    Collect(scan, 3, *columns_);
    next_ = last - rows;
  }
  complete_ = !hasRow;
  return complete_;
}

void ValueIndex::Forget() {
  columns_ = std::make_unique<ValueColumns>(0);
}

std::size_t ValueIndex::ValueCount(std::size_t column) const {
  return columns_->dictionaries[column].Size();
}

std::string_view ValueIndex::Value(std::size_t column, std::size_t number) const {
  return columns_->dictionaries[column].At(static_cast<std::uint32_t>(number));
}

IdSet ValueIndex::RowsWith(const Marks& marks, std::uint32_t wanted) const {
  std::vector<std::int64_t> found;
  for (std::size_t row = 0; row < columns_->ids.size(); ++row) {
    std::uint32_t carried = 0;
    for (std::size_t i = 0; i < marks.size(); ++i) carried |= marks[i][columns_->codes[i][row]];
    if ((carried & wanted) == wanted) found.push_back(columns_->ids[row]);
  }
  return IdSet(std::move(found));
}

std::unique_ptr<ValueIndex> Database::IndexValues(std::string_view table,
                                                  std::span<const IndexedColumn> columns) {
  return std::make_unique<ValueIndex>(connection_, table, columns);
}

}  // namespace varnlog::dao
