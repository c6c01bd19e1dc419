#include "db/dao/sqlite/rows/ReadAll.h"

#include <algorithm>
#include <utility>

#include "db/dao/sqlite/FileStorage.h"
#include "db/dao/sqlite/rows/DistinctRows.h"

namespace varnlog::dao {

namespace {

std::string OrderClause(const Select& select) {
  std::string clause;
  for (const OrderTerm& term : select.parsed.orderBy) {
    clause += (clause.empty() ? " ORDER BY " : ", ") + term.storage + (term.descending ? " DESC" : "");
  }
  return clause;
}

std::string FromClause(const Select& select) {
  return " FROM " + QuoteIdentifier(select.table->name) + select.WhereClause();
}

std::string SnapshotSql(const Select& select) {
  return (select.parsed.distinct ? "SELECT DISTINCT " : "SELECT ") + select.ColumnList() +
         FromClause(select) + OrderClause(select);
}

// Then rows of the result are equal when all fields of the table in memory are.
bool GivesAllFields(const SelectStatement& parsed) {
  return std::all_of(parsed.fields.begin(), parsed.fields.end(), [&parsed](const std::string& field) {
    return std::any_of(parsed.columns.begin(), parsed.columns.end(), [&field](const SelectColumn& column) {
      return column.isField && SameName(column.field, field);
    });
  });
}

/// The statement over the different combinations, with the group of each row behind its columns where that
/// tells which rows are distinct.
std::string CombinationsSql(const Select& select) {
  if (!select.parsed.orderBy.empty() || !GivesAllFields(select.parsed)) return SnapshotSql(select);
  return "SELECT " + select.ColumnList() + ", " + DistinctRows::kGroupColumn + FromClause(select) +
         " ORDER BY rowid";
}

Statement& SnapshotStatement(FileStorage& storage, Select& select) {
  if (select.parsed.distinct && !select.parsed.allFields) {
    auto combinations = storage.Distinct().Find(storage.File(), *select.table, select.parsed.fields);
    if (combinations != nullptr) {
      if (select.combinations != combinations) {
        select.distinctSnapshot = Statement(*combinations, CombinationsSql(select));
        select.combinations = std::move(combinations);
      }
      return select.distinctSnapshot;
    }
  }
  if (!select.snapshot.IsPrepared()) select.snapshot = Statement(storage.File(), SnapshotSql(select));
  return select.snapshot;
}

}  // namespace

std::shared_ptr<const RowSet> ReadAll(FileStorage& storage, Select& select, const Parameters& parameters) {
  Statement& statement = SnapshotStatement(storage, select);
  auto rows = std::make_shared<RowSet>(select.columns.size());
  ResetAtEnd reset(statement);
  BindParameters(statement, parameters);
  const auto columns = static_cast<int>(select.columns.size());
  const bool hasGroups = statement.ColumnCount() > columns;
  std::int64_t group = 0;  // the first one is 1
  while (statement.Step()) {
    if (hasGroups && statement.Number(columns) == group) continue;
    if (hasGroups) group = statement.Number(columns);
    AppendRow(*rows, statement);
  }
  return rows;
}

}  // namespace varnlog::dao
