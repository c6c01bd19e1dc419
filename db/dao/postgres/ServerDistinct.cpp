#include "db/dao/postgres/ServerDistinct.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "db/dao/postgres/ServerDialect.h"
#include "db/dao/sql/JetSql.h"

namespace varnlog::dao {

namespace {

using Names = std::vector<std::string>;

std::string List(const Names& names, std::string_view before = {}, std::string_view behind = {},
                 std::string_view divider = ", ") {
  std::string list;
  for (const std::string& name : names)
    (list.empty() ? list : list.append(divider)).append(before).append(name).append(behind);
  return list;
}

bool IsText(const ResolvedSelect& select, std::size_t column) {
  const std::size_t ordinal = select.ordinals[column];
  if (ordinal >= select.table->fields.size()) return false;
  const FieldType type = select.table->fields[ordinal].type;
  return type == FieldType::kText || type == FieldType::kMemo;
}

bool IsNamed(const std::string& field, const std::string& storageSql) {
  return storageSql.find(QuoteIdentifier(field)) != std::string::npos;
}

/// Whether an index can help to find the rows.
bool IsByIndex(const ResolvedSelect& select) {
  return std::ranges::any_of(select.table->firstStoredFields,
                             [&](const std::string& field) { return IsNamed(field, select.parsed.where); });
}

/// The fields that the statement names, quoted and in the order of an index that keeps equal rows together;
/// nothing when there is none.
Names FieldsByIndex(const ResolvedSelect& select) {
  const auto isWanted = [&select](const std::string& field) {
    return std::ranges::any_of(select.parsed.fields,
                               [&field](const std::string& each) { return SameName(each, field); });
  };
  for (const Names& index : select.table->groupedFields) {
    if (index.size() != select.parsed.fields.size() || !std::ranges::all_of(index, isWanted)) continue;
    Names fields;
    for (const std::string& field : index) fields.push_back(QuoteIdentifier(field));
    return fields;
  }
  return {};
}

/// What a DISTINCT statement does with the combinations of its fields' values: those that are equal by the
/// order of texts are one row.
class Folding {
 public:
  explicit Folding(const ResolvedSelect& select) {
    const bool areFieldsColumns = std::ranges::all_of(select.parsed.fields, [&](const std::string& field) {
      return std::ranges::any_of(select.parsed.columns, [&](const SelectColumn& column) {
        return column.isField && SameName(column.field, field);
      });
    });
    for (std::size_t i = 0; i < select.columns.size(); ++i) {
      const std::string number = std::to_string(i);
      const std::string order = IsText(select, i)               ? ServerTextKey(select.columns[i])
                                : select.parsed.columns.empty() ? select.columns[i]
                                                                : select.parsed.columns[i].order;
      names_.push_back("c" + number);
      columns_.push_back(select.columns[i] + " AS c" + number + ", " + order + " AS k" + number);
      // What is computed from fields that are equal is equal, too.
      if (!areFieldsColumns || select.parsed.columns[i].isField) keys_.push_back("k" + number);
    }
    for (const OrderTerm& term : select.parsed.orderBy) {
      const auto column = std::ranges::find_if(
          select.parsed.columns, [&term](const SelectColumn& each) { return each.order == term.storage; });
      if (column == select.parsed.columns.end())
        throw EngineError(ErrorNumber::kSyntaxError, "DISTINCT is ordered by its own columns only.");
      terms_ += (terms_.empty() ? "k" : ", k") + std::to_string(column - select.parsed.columns.begin()) +
                (term.descending ? " DESC NULLS LAST" : " NULLS FIRST");
    }
    terms_ += (terms_.empty() ? "" : ", ") + List(keys_, "", " NULLS FIRST");
  }

  /// c0, c1, ...: the statement's columns.
  [[nodiscard]] std::string Columns() const { return List(names_); }
  /// By which the rows are ordered.
  [[nodiscard]] const std::string& Terms() const { return terms_; }
  /// A SELECT of the different rows of `combinations`, a FROM clause, of which `first` is an expression for
  /// the place of each: the smallest of those that are equal stays. `isCostly` says that it is asked for only
  /// where it is needed.
  [[nodiscard]] std::string Different(const std::string& combinations, const std::string& first,
                                      bool isCostly) const {
    const std::string keys = List(keys_);
    std::string rows = "SELECT " + List(columns_) + ", combinations.* FROM " + combinations;
    if (isCostly)
      rows = "SELECT *, count(*) OVER (PARTITION BY " + keys + ") AS equals FROM (" + rows + ") AS a";
    return "SELECT DISTINCT ON (" + keys + ") * FROM (SELECT *, " +
           (isCostly ? "CASE WHEN equals > 1 THEN " + first + " END" : first) + " AS place FROM (" + rows +
           ") AS b) AS c ORDER BY " + List(keys_, "", " NULLS FIRST") + ", place";
  }

 private:
  Names names_;
  Names columns_;
  Names keys_;
  std::string terms_;
};

// The different combinations of the fields are found first: what is slow is done once for each of them.
// OFFSET keeps the server from doing it for each row after all.
std::string ByReadingAll(const ResolvedSelect& select) {
  const std::string key = QuoteIdentifier(ServerStorage::KeyField(*select.table));
  const std::string table = QuoteIdentifier(select.table->name);
  Names fields;
  for (const std::string& field : select.parsed.fields)
    fields.push_back(QuoteIdentifier(select.table->fields[*select.table->FieldAt(field)].name));
  const std::string combinations =
      fields.empty()
          ? "(SELECT 1 AS one FROM " + table + " LIMIT 1) AS combinations"
          : "(SELECT " + List(fields) + ", min(" + key + ") AS varnlog_first FROM " + table + " GROUP BY " +
                List(fields) + (IsByIndex(select) ? "" : " OFFSET 0") + ") AS combinations";
  const Folding folding(select);
  return "SELECT " + folding.Columns() + " FROM (" +
         folding.Different(combinations + select.WhereClause(), fields.empty() ? "one" : "varnlog_first",
                           false) +
         ") AS different ORDER BY " + folding.Terms();
}

/// The combinations of an index's fields, found field by field: each value of the first one by asking for the
/// next greater one, then within each of them those of the second one, and so on. The statement's condition
/// is applied as soon as all fields that it needs are known.
class IndexWalk {
 public:
  IndexWalk(const ResolvedSelect& select, Names fields)
      : select_(select), table_(QuoteIdentifier(select.table->name)), fields_(std::move(fields)) {
    for (std::size_t i = 0; i < fields_.size(); ++i)
      if (select.parsed.where.find(fields_[i]) != std::string::npos) known_ = i + 1;
  }

  /// A column that says whether there are too many for it, then the statement's; one row at least, in which
  /// the last column is false when it is none. `isWalk` is false to read the whole index instead, once it was
  /// seen that there are too many.
  [[nodiscard]] std::string Sql(bool isWalk) const {
    const Folding folding(select_);
    const std::string condition = select_.WhereClause("NOT (SELECT is_too_long FROM answer)");
    // What is no value has no place behind which the next could be asked for.
    const std::string empty = Conditions(" IS NULL", fields_.size(), " OR ");
    const std::string combinations = "(SELECT " + List(fields_) + " FROM " +
                                     (known_ < fields_.size() ? Level(fields_.size()) : "matching") +
                                     " UNION ALL SELECT * FROM (" + Different(fields_.size(), empty) +
                                     " OFFSET 0) AS empty" + condition + ") AS combinations";
    return "WITH RECURSIVE " + (isWalk ? Looking() : ReadingAll()) +
           "matching AS MATERIALIZED (SELECT * FROM looked" + condition + "), " +
           Levels(known_, fields_.size(), "matching AS p") + "different AS (" +
           folding.Different(combinations, Place(empty), true) + ") SELECT is_too_long::int, " +
           folding.Columns() +
           ", coalesce(is_row, 0) FROM answer LEFT JOIN (SELECT *, 1 AS is_row FROM different) AS rows ON "
           "true ORDER BY " +
           folding.Terms();
  }

 private:
  [[nodiscard]] static std::string Level(std::size_t fields) { return "level" + std::to_string(fields); }
  [[nodiscard]] Names First(std::size_t count) const {
    return {fields_.begin(), fields_.begin() + static_cast<std::ptrdiff_t>(count)};
  }
  [[nodiscard]] std::string Conditions(std::string_view condition, std::size_t count,
                                       std::string_view link) const {
    return "(" + List(First(count), "", condition, link) + ")";
  }
  [[nodiscard]] std::string Different(std::size_t count, const std::string& condition) const {
    return "SELECT DISTINCT " + List(First(count)) + " FROM " + table_ + " WHERE " + condition;
  }

  // A step costs as much as reading some forty rows of the index, and one in each part of a divided table.
  [[nodiscard]] std::string Bound() const {
    const std::string table = QuoteText(table_) + "::regclass";
    return "bound AS MATERIALIZED (SELECT (greatest(10000, sum(reltuples) / 100) / count(*))::bigint AS most "
           "FROM pg_class "
           "WHERE relkind = 'r' AND (oid = " +
           table + " OR oid IN (SELECT inhrelid FROM pg_inherits WHERE inhparent = " + table + "))), ";
  }
  [[nodiscard]] std::string Looking() const {
    return Bound() + Levels(0, known_, "(SELECT) AS p") + "looked AS MATERIALIZED (SELECT * FROM " +
           Level(known_) +
           " LIMIT (SELECT most + 1 FROM bound)), answer AS MATERIALIZED (SELECT count(*) > (SELECT most "
           "FROM bound) "
           "AS is_too_long FROM looked), ";
  }
  [[nodiscard]] std::string ReadingAll() const {
    return "looked AS MATERIALIZED (" + Different(known_, Conditions(" IS NOT NULL", known_, " AND ")) +
           "), answer AS (SELECT false AS is_too_long), ";
  }

  // The common table expressions of the fields behind `from`, up to `to`.
  [[nodiscard]] std::string Levels(std::size_t from, std::size_t to, const std::string& source) const {
    std::string levels;
    for (std::size_t i = from; i < to; ++i) {
      const std::string& field = fields_[i];
      const Names before = First(i);
      const std::string columns = List(before, "p.") + (before.empty() ? "n." : ", n.") + field;
      std::string same;
      for (const std::string& each : before) same += "t." + each + " = p." + each + " AND ";
      const auto step = [&](const std::string& rows, const std::string& condition) {
        return "SELECT " + columns + " FROM " + rows + " CROSS JOIN LATERAL (SELECT t." + field + " FROM " +
               table_ + " AS t WHERE " + same + "t." + field + condition + " ORDER BY t." + field +
               " LIMIT 1) AS n";
      };
      levels += Level(i + 1) + " AS (" + step(i == from ? source : Level(i) + " AS p", " IS NOT NULL") +
                " UNION ALL " + step(Level(i + 1) + " AS p", " > p." + field) + "), ";
    }
    return levels;
  }

  // The number of the first row with the combination. The sum keeps the server from walking along all
  // numbers.
  [[nodiscard]] std::string Place(const std::string& empty) const {
    const std::string key = QuoteIdentifier(ServerStorage::KeyField(*select_.table));
    const auto first = [&](std::string_view relation, const std::string& further) {
      std::string conditions = further;
      for (const std::string& field : fields_)
        conditions.append(conditions.empty() ? "" : " AND ")
            .append("t.")
            .append(field)
            .append(relation)
            .append("b.")
            .append(field);
      return "(SELECT min(t." + key + " + 0) FROM " + table_ + " AS t WHERE " + conditions + ")";
    };
    return "CASE WHEN " + empty + " THEN " +
           first(" IS NOT DISTINCT FROM ", "(" + List(fields_, "t.", " IS NULL", " OR ") + ")") + " ELSE " +
           first(" = ", "") + " END";
  }

  const ResolvedSelect& select_;
  std::string table_;
  Names fields_;
  std::size_t known_ = 1;  // how many of them the condition needs
};

std::shared_ptr<const RowSet> RowsFrom(const ServerResult& found, int count, int firstColumn,
                                       std::size_t columns) {
  auto rows = std::make_shared<RowSet>(columns);
  for (int row = 0; row < count; ++row)
    rows->Append([&](std::size_t column) { return found.Cell(row, static_cast<int>(column) + firstColumn); });
  return rows;
}

}  // namespace

std::shared_ptr<const RowSet> ReadDistinct(ServerStorage& storage, const ResolvedSelect& select) {
  const std::size_t columns = select.columns.size();
  Names fields = FieldsByIndex(select);
  if (fields.empty() || IsByIndex(select)) {
    const ServerResult found = storage.RunOnce(ByReadingAll(select));
    return RowsFrom(found, found.RowCount(), 0, columns);
  }
  std::set<std::string>& tooLong = storage.LongWalks();
  const std::string name = select.table->name + List(fields);
  const IndexWalk walk(select, std::move(fields));
  const auto read = [&](bool isWalk) { return storage.RunOnce(walk.Sql(isWalk)); };
  ServerResult found = read(!tooLong.contains(name));
  if (found.Number(0, 0) != 0) {
    tooLong.insert(name);
    found = read(false);
  }
  const bool hasRows = found.Number(0, static_cast<int>(columns) + 1) != 0;
  return RowsFrom(found, hasRows ? found.RowCount() : 0, 1, columns);
}

}  // namespace varnlog::dao
