#include "db/dao/SnapshotRecordset.h"

#include <utility>

#include "db/dao/Connection.h"
#include "db/dao/DistinctRows.h"

namespace varnlog::dao {

namespace {

std::string SnapshotSql(const Select& select) {
  std::string sql = select.parsed.distinct ? "SELECT DISTINCT " : "SELECT ";
  sql += select.ColumnList() + " FROM " + QuoteIdentifier(select.table->name) + select.WhereClause();
  const char* separator = " ORDER BY ";
  for (const OrderTerm& term : select.parsed.orderBy) {
    sql += separator + term.storage + (term.descending ? " DESC" : "");
    separator = ", ";
  }
  return sql;
}

Statement& SnapshotStatement(Connection& connection, Select& select) {
  if (select.parsed.distinct && !select.parsed.allFields) {
    auto combinations = connection.Distinct().Find(connection, *select.table, select.parsed.fields);
    if (combinations != nullptr) {
      if (select.combinations != combinations) {
        select.distinctSnapshot = Statement(*combinations, SnapshotSql(select));
        select.combinations = std::move(combinations);
      }
      return select.distinctSnapshot;
    }
  }
  if (!select.snapshot.IsPrepared()) select.snapshot = Statement(connection, SnapshotSql(select));
  return select.snapshot;
}

}  // namespace

SnapshotRecordset::SnapshotRecordset(std::shared_ptr<const std::vector<FieldDef>> defs,
                                     std::shared_ptr<const RowSet> rows)
    : ScrollRecordset(defs), defs_(std::move(defs)), rows_(std::move(rows)) {
  GoToFirst();
}

SnapshotRecordset::SnapshotRecordset(const SnapshotRecordset& origin)
    : ScrollRecordset(origin.defs_), defs_(origin.defs_), rows_(origin.rows_) {}

std::unique_ptr<Recordset> SnapshotRecordset::Clone() {
  return std::unique_ptr<Recordset>(new SnapshotRecordset(*this));
}

CellView SnapshotRecordset::CurrentCell(std::size_t ordinal) {
  return rows_->At(static_cast<std::size_t>(RequirePosition()), ordinal);
}

std::shared_ptr<const RowSet> ReadAll(Connection& connection, Select& select, const Parameters& parameters) {
  Statement& statement = SnapshotStatement(connection, select);
  auto rows = std::make_shared<RowSet>(select.columns.size());
  ResetAtEnd reset(statement);
  BindParameters(statement, parameters);
  while (statement.Step()) rows->Append(statement);
  return rows;
}

}  // namespace varnlog::dao
