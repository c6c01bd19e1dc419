#include "db/dao/sqlite/MissingRows.h"

#include <algorithm>

#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/Schema.h"

namespace varnlog::dao {

namespace {

bool HasCounter(const TableSchema& table) {
  return std::any_of(table.fields.begin(), table.fields.end(),
                     [](const FieldDef& field) { return field.isCounter; });
}

std::int64_t OneNumber(Statement& statement) {
  ResetAtEnd reset(statement);
  return statement.Step() ? statement.Number(0) : 0;
}

std::int64_t OneNumber(Connection& connection, const std::string& sql) {
  Statement statement(connection, sql);
  return OneNumber(statement);
}

std::int64_t LastGivenOut(Connection& connection, const std::string& table) {
  std::int64_t last = OneNumber(connection, "SELECT max(rowid) FROM " + QuoteIdentifier(table) +
                                                " WHERE rowid <= " + std::to_string(kMostCounter));
  if (OneNumber(connection, "SELECT count(*) FROM sqlite_schema WHERE name = 'sqlite_sequence'") > 0) {
    Statement find(connection, "SELECT seq FROM sqlite_sequence WHERE name = ?1");
    find.Bind(1, std::string_view(table));
    const std::int64_t counter = OneNumber(find);
    if (counter <= kMostCounter) last = std::max(last, counter);
  }
  return std::max<std::int64_t>(last, 0);
}

}  // namespace

std::vector<IdRange> UnusedIds(Connection& connection, const std::string& table) {
  const TableSchema schema = ReadTableSchema(connection, table);
  if (!HasCounter(schema)) return {};
  const std::string name = QuoteIdentifier(schema.name);
  const std::int64_t last = LastGivenOut(connection, schema.name);
  // Counting takes the narrowest index; the ids one by one take the table.
  if (OneNumber(connection, "SELECT count(*) FROM " + name) == last) return {};
  std::vector<IdRange> unused;
  std::int64_t next = 1;
  Statement ids(connection,
                "SELECT rowid FROM " + name + " NOT INDEXED WHERE rowid BETWEEN 1 AND ?1 ORDER BY rowid");
  ids.Bind(1, last);
  while (ids.Step()) {
    const std::int64_t id = ids.Number(0);
    if (id > next) unused.push_back({next, id - 1});
    next = id + 1;
  }
  if (next <= last) unused.push_back({next, last});
  return unused;
}

}  // namespace varnlog::dao
