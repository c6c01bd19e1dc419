#include "db/dao/sqlite/IndexCheck.h"

#include <functional>
#include <limits>
#include <optional>
#include <utility>

#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/TextFunctions.h"
#include "db/dao/text/Collation.h"
#include "platform/CodePage.h"

namespace varnlog::dao {

namespace {

constexpr std::uint64_t kMix = 0x9e3779b97f4a7c15U;

std::uint64_t Mixed(std::uint64_t sum, std::uint64_t value) {
  sum = (sum ^ value) * kMix;
  return sum ^ (sum >> 29U);
}

std::uint64_t HashOf(const CellView& value) {
  switch (value.kind) {
    case CellKind::kText:
      return std::hash<std::string_view>()(value.text);
    case CellKind::kInteger:
      return Mixed(1, static_cast<std::uint64_t>(value.integer));
    case CellKind::kReal:
      return Mixed(2, std::hash<double>()(value.real));
    default:
      return static_cast<std::uint64_t>(value.kind);
  }
}

double NumberIn(const CellView& value) {
  return value.kind == CellKind::kInteger ? static_cast<double>(value.integer) : value.real;
}

// What an index is sorted by, of the entry before. Kept in buffers that are used again.
class LastKey {
 public:
  explicit LastKey(const std::vector<IndexCheck::Column>& columns)
      : columns_(columns), keys_(columns.size()) {}

  /// Whether the entry, its row's id and its key, comes behind the one before, which it replaces.
  bool Advance(std::span<const CellView> entry) {
    bool isBehind = false;
    bool isDecided = isFirst_;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      const CellView& value = entry[i + 1];
      const int order = isDecided ? 0 : Order(keys_[i], value, columns_[i].isText);
      if (order != 0) isBehind = order < 0;
      isDecided = isDecided || order != 0;
      keys_[i].rank = Rank(value.kind);
      keys_[i].number = NumberIn(value);
      if (value.kind == CellKind::kText) keys_[i].text = value.text;
    }
    if (!isDecided) isBehind = lastId_ < entry[0].integer;
    lastId_ = entry[0].integer;
    return std::exchange(isFirst_, false) || isBehind;
  }

 private:
  struct Key {
    int rank = 0;
    double number = 0;
    std::string text;
  };
  enum : int { kNothing, kNumber, kText, kBytes };

  static int Rank(CellKind kind) {
    if (kind == CellKind::kInteger || kind == CellKind::kReal) return kNumber;
    return kind == CellKind::kText ? kText : kind == CellKind::kBytes ? kBytes : kNothing;
  }

  // Negative when the one before is the lesser one.
  static int Order(const Key& before, const CellView& value, bool isText) {
    const int rank = Rank(value.kind);
    if (before.rank != rank) return before.rank - rank;
    if (rank == kText)
      return isText ? Collation::Instance().Compare(before.text, value.text)
                    : before.text.compare(value.text);
    if (rank != kNumber) return 0;
    const double number = NumberIn(value);
    return before.number < number ? -1 : before.number > number ? 1 : 0;
  }

  const std::vector<IndexCheck::Column>& columns_;
  std::vector<Key> keys_;
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

void IndexCheck::TakeRow(std::span<const CellView> row) {
  auto entry = static_cast<std::uint64_t>(row[0].integer);
  for (const Column& column : columns_) entry = Mixed(entry, HashOf(row[column.field + 1]));
  tableSum_ += entry;
}

void IndexCheck::Compare(Connection& connection, std::vector<std::string>& findings) {
  std::uint64_t sum = 0;
  bool isInOrder = true;
  LastKey last(columns_);
  std::vector<CellView> values(columns_.size() + 1);
  Statement entries(connection, query_);
  while (entries.Step()) {
    entries.GetValues(values);
    auto entry = static_cast<std::uint64_t>(values[0].integer);
    for (std::size_t i = 1; i < values.size(); ++i) entry = Mixed(entry, HashOf(values[i]));
    sum += entry;
    isInOrder = last.Advance(values) && isInOrder;
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

bool FitsField(const CellView& value, const FieldDef& field) {
  if (value.kind == CellKind::kNull) return true;
  const bool isText = value.kind == CellKind::kText;
  const bool isInteger = value.kind == CellKind::kInteger;
  switch (field.type) {
    case FieldType::kBoolean:
      return isInteger && (value.integer == 0 || value.integer == 1);
    case FieldType::kLong:
      return isInteger && FitsNumber(value.integer, field);
    case FieldType::kDouble:
      return isInteger || value.kind == CellKind::kReal;
    case FieldType::kDate:
      return isText && IsDate(value.text);
    case FieldType::kText:
      return isText && FitsText(value.text, static_cast<std::size_t>(field.size));
    case FieldType::kMemo:
      break;
  }
  return isText;
}

}  // namespace varnlog::dao
