#include "db/dao/sqlite/IndexCheck.h"

#include <functional>
#include <limits>
#include <optional>
#include <utility>

#include <sqlite3.h>

#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/Collation.h"
#include "db/dao/sqlite/Connection.h"
#include "platform/CodePage.h"

namespace varnlog::dao {

namespace {

constexpr std::uint64_t kMix = 0x9e3779b97f4a7c15U;

std::uint64_t Mixed(std::uint64_t sum, std::uint64_t value) {
  sum = (sum ^ value) * kMix;
  return sum ^ (sum >> 29U);
}

std::uint64_t HashOf(const Statement& row, int column) {
  const int type = row.ColumnType(column);
  if (type == SQLITE_TEXT) return std::hash<std::string_view>()(row.Text(column));
  if (type == SQLITE_INTEGER) return Mixed(1, static_cast<std::uint64_t>(row.Number(column)));
  if (type == SQLITE_FLOAT) return Mixed(2, std::hash<double>()(row.Real(column)));
  return static_cast<std::uint64_t>(type);
}

// What an index is sorted by, of the entry before. Kept in buffers that are used again.
class LastKey {
 public:
  explicit LastKey(const std::vector<IndexCheck::Column>& columns)
      : columns_(columns), types_(columns.size(), SQLITE_NULL), texts_(columns.size()) {}

  /// Whether the entry comes behind the one before, which it replaces.
  bool Advance(const Statement& entry) {
    bool isBehind = false;
    bool isDecided = isFirst_;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      const int column = static_cast<int>(i) + 1;
      const int order = isDecided ? 0 : Order(i, entry, column);
      if (order != 0) isBehind = order < 0;
      isDecided = isDecided || order != 0;
      Keep(i, entry, column);
    }
    const std::int64_t id = entry.Number(0);
    if (!isDecided) isBehind = lastId_ < id;
    lastId_ = id;
    return std::exchange(isFirst_, false) || isBehind;
  }

 private:
  static int Rank(int type) {
    return type == SQLITE_NULL ? 0 : type == SQLITE_TEXT ? 2 : type == SQLITE_BLOB ? 3 : 1;
  }

  // Negative when the entry before is the lesser one.
  [[nodiscard]] int Order(std::size_t i, const Statement& entry, int column) const {
    const int rank = Rank(entry.ColumnType(column));
    if (Rank(types_[i]) != rank) return Rank(types_[i]) - rank;
    if (rank == 2)
      return columns_[i].isText ? Collation::Instance().Compare(texts_[i], entry.Text(column))
                                : texts_[i].compare(entry.Text(column));
    if (rank != 1) return 0;
    const double before = numbers_.empty() ? 0 : numbers_[i];
    return before < entry.Real(column) ? -1 : before > entry.Real(column) ? 1 : 0;
  }

  void Keep(std::size_t i, const Statement& entry, int column) {
    types_[i] = entry.ColumnType(column);
    if (types_[i] == SQLITE_TEXT) texts_[i] = entry.Text(column);
    if (Rank(types_[i]) != 1) return;
    numbers_.resize(columns_.size());
    numbers_[i] = entry.Real(column);
  }

  const std::vector<IndexCheck::Column>& columns_;
  std::vector<int> types_;
  std::vector<std::string> texts_;
  std::vector<double> numbers_;
  std::int64_t lastId_ = 0;
  bool isFirst_ = true;
};

// Nothing for an index that sorts in another way than the engine's do.
std::optional<std::vector<IndexCheck::Column>> ColumnsOf(Connection& connection, const TableSchema& table,
                                                         std::string_view index) {
  std::vector<IndexCheck::Column> columns;
  Statement stored(connection,
                   "SELECT name, coll, \"desc\" FROM pragma_index_xinfo(?1) WHERE key ORDER BY seqno");
  stored.Bind(1, index);
  bool isKnown = true;
  while (stored.Step()) {
    const auto field = table.FieldAt(stored.Text(0));
    const bool isText = stored.Text(1) == kCollationName;
    isKnown = isKnown && field && stored.Number(2) == 0 && (isText || stored.Text(1) == "BINARY");
    if (isKnown) columns.push_back({*field, isText});
  }
  if (!isKnown) return std::nullopt;
  return columns;
}

void CheckByStorage(Connection& connection, std::string_view table, std::vector<std::string>& findings) {
  Statement check(connection, "PRAGMA integrity_check(" + QuoteIdentifier(table) + ")");
  while (check.Step())
    if (check.Text(0) != "ok") findings.emplace_back(check.Text(0));
}

bool IsDate(std::string_view text) {
  constexpr std::size_t kIsoLength = 19;
  return text.size() == kIsoLength && platform::DateTime::FromIso(text).has_value();
}

bool FitsText(std::string_view text, std::size_t most) {
  return text.size() <= most || platform::CharacterCount(text) <= most;
}

bool FitsNumber(std::int64_t number, const FieldDef& field) {
  return number >= (field.isCounter ? 1 : std::numeric_limits<std::int32_t>::min()) && number <= kMostCounter;
}

}  // namespace

IndexCheck::IndexCheck(const TableSchema& table, std::string name, std::vector<Column> columns)
    : name_(std::move(name)), query_("SELECT rowid"), columns_(std::move(columns)) {
  for (const Column& column : columns_) query_ += ", " + QuoteIdentifier(table.fields[column.field].name);
  query_ += " FROM " + QuoteIdentifier(table.name) + " INDEXED BY " + QuoteIdentifier(name_);
}

void IndexCheck::TakeRow(const Statement& row, int firstColumn) {
  auto entry = static_cast<std::uint64_t>(row.Number(0));
  for (const Column& column : columns_)
    entry = Mixed(entry, HashOf(row, firstColumn + static_cast<int>(column.field)));
  tableSum_ += entry;
}

void IndexCheck::Compare(Connection& connection, std::vector<std::string>& findings) {
  std::uint64_t sum = 0;
  bool isInOrder = true;
  LastKey last(columns_);
  Statement entries(connection, query_);
  while (entries.Step()) {
    auto entry = static_cast<std::uint64_t>(entries.Number(0));
    for (int column = 1; column <= static_cast<int>(columns_.size()); ++column)
      entry = Mixed(entry, HashOf(entries, column));
    sum += entry;
    isInOrder = last.Advance(entries) && isInOrder;
  }
  if (sum != tableSum_) findings.push_back("index " + name_ + " does not agree with its table");
  if (!isInOrder) findings.push_back("index " + name_ + " is not in order");
}

std::vector<IndexCheck> IndexChecks(Connection& connection, const TableSchema& table,
                                    std::vector<std::string>& findings) {
  std::vector<IndexCheck> checks;
  Statement indexes(connection, "SELECT name, partial FROM pragma_index_list(?1)");
  indexes.Bind(1, std::string_view(table.name));
  bool areKnown = true;
  while (indexes.Step()) {
    auto columns = ColumnsOf(connection, table, indexes.Text(0));
    areKnown = areKnown && columns && indexes.Number(1) == 0;
    if (areKnown) checks.emplace_back(table, std::string(indexes.Text(0)), std::move(*columns));
  }
  if (!areKnown) CheckByStorage(connection, table.name, findings);
  return checks;
}

bool FitsField(const Statement& row, int column, const FieldDef& field) {
  const int type = row.ColumnType(column);
  if (type == SQLITE_NULL) return true;
  switch (field.type) {
    case FieldType::kBoolean:
      return type == SQLITE_INTEGER && (row.Number(column) == 0 || row.Number(column) == 1);
    case FieldType::kLong:
      return type == SQLITE_INTEGER && FitsNumber(row.Number(column), field);
    case FieldType::kDouble:
      return type == SQLITE_INTEGER || type == SQLITE_FLOAT;
    case FieldType::kDate:
      return type == SQLITE_TEXT && IsDate(row.Text(column));
    case FieldType::kText:
      return type == SQLITE_TEXT && FitsText(row.Text(column), static_cast<std::size_t>(field.size));
    case FieldType::kMemo:
      break;
  }
  return type == SQLITE_TEXT;
}

}  // namespace varnlog::dao
