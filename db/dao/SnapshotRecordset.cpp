#include "db/dao/SnapshotRecordset.h"

#include <utility>

#include "db/dao/Connection.h"

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
  if (!select.snapshot.IsPrepared()) select.snapshot = Statement(connection, SnapshotSql(select));
  auto rows = std::make_shared<RowSet>(select.columns.size());
  ResetAtEnd reset(select.snapshot);
  BindParameters(select.snapshot, parameters);
  while (select.snapshot.Step()) rows->Append(select.snapshot);
  return rows;
}

}  // namespace varnlog::dao
