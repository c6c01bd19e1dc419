#include "db/dao/TableScan.h"

#include <utility>

#include "db/dao/DBEngine.h"
#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/Schema.h"

namespace varnlog::dao {

namespace {

std::string ScanSql(const TableSchema& table, std::span<const std::string> fields, const ScanRange& range) {
  std::string list;
  for (const std::string& field : fields) list += (list.empty() ? "" : ", ") + QuoteIdentifier(field);
  const std::string order = range.order.empty() ? "rowid" : QuoteIdentifier(range.order);
  return "SELECT " + list + " FROM " + QuoteIdentifier(table.name) + " WHERE " + order +
         " BETWEEN ?1 AND ?2 ORDER BY " + order + (range.order.empty() ? "" : ", rowid");
}

}  // namespace

TableScan::TableScan(std::shared_ptr<Connection> connection, std::string_view table,
                     std::span<const std::string> fields, const ScanRange& range)
    : connection_(std::move(connection)),
      rows_(*connection_, ScanSql(*connection_->Table(table), fields, range)),
      values_(fields.size()) {
  rows_.Bind(1, range.first);
  rows_.Bind(2, range.last);
}

bool TableScan::Next() {
  if (!rows_.Step()) return false;
  rows_.GetValues(values_);
  return true;
}

std::unique_ptr<TableScan> Database::Scan(std::string_view table, std::span<const std::string> fields,
                                          const ScanRange& range) {
  return std::make_unique<TableScan>(connection_, table, fields, range);
}

std::int64_t Database::Greatest(std::string_view table, std::string_view field) {
  Statement greatest(*connection_, "SELECT max(" + QuoteIdentifier(field) + ") FROM " +
                                       QuoteIdentifier(connection_->Table(table)->name));
  ResetAtEnd reset(greatest);
  return greatest.Step() ? greatest.Number(0) : 0;
}

}  // namespace varnlog::dao
