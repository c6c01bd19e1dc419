#include "db/dao/sqlite/MissingRows.h"

#include <algorithm>
#include <optional>

#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/Schema.h"
#include "db/dao/sqlite/TableSalvage.h"

namespace varnlog::dao {

namespace {

bool HasCounter(const TableSchema& table) {
  return std::any_of(table.fields.begin(), table.fields.end(),
                     [](const FieldDef& field) { return field.isCounter; });
}

std::vector<std::int64_t> Numbers(Connection& connection, const std::string& sql) {
  std::vector<std::int64_t> numbers;
  Statement statement(connection, sql);
  while (statement.Step()) numbers.push_back(statement.Number(0));
  return numbers;
}

std::int64_t LastGivenOut(Connection& connection, const std::string& table) {
  if (Numbers(connection, "SELECT 1 FROM sqlite_schema WHERE name = 'sqlite_sequence'").empty()) return 0;
  Statement find(connection, "SELECT seq FROM sqlite_sequence WHERE name = ?1");
  find.Bind(1, std::string_view(table));
  ResetAtEnd reset(find);
  return find.Step() ? find.Number(0) : 0;
}

// The numbers that every index of the table agrees on; nothing when one of them cannot be read.
std::optional<std::vector<std::int64_t>> IndexedIds(Connection& damaged, const std::string& name) {
  try {
    const TableSchema table = ReadTableSchema(damaged, name);
    std::optional<std::vector<std::int64_t>> ids;
    for (const Index& index : table.indexes) {
      if (index.isPrimary) continue;
      auto found = Numbers(damaged, "SELECT rowid FROM " + QuoteIdentifier(name) + " INDEXED BY " +
                                        QuoteIdentifier(index.name));
      std::sort(found.begin(), found.end());
      if (ids && *ids != found) return std::nullopt;
      ids = std::move(found);
    }
    return ids;
  } catch (const EngineError& error) {
    if (!IsDamage(error)) throw;
    return std::nullopt;
  }
}

void Add(std::vector<IdRange>& ranges, std::int64_t first, std::int64_t last) {
  if (!ranges.empty() && ranges.back().last + 1 == first)
    ranges.back().last = last;
  else
    ranges.push_back({first, last});
}

// Of ids in ascending order those that lie in one of the ranges, which are in ascending order, too.
std::vector<IdRange> Within(const std::vector<std::int64_t>& ids, const std::vector<IdRange>& ranges) {
  std::vector<IdRange> within;
  auto range = ranges.begin();
  for (const std::int64_t id : ids) {
    while (range != ranges.end() && range->last < id) ++range;
    if (range == ranges.end()) break;
    if (range->first <= id) Add(within, id, id);
  }
  return within;
}

}  // namespace

std::vector<IdRange> UnusedIds(Connection& connection, const std::string& table) {
  if (!HasCounter(ReadTableSchema(connection, table))) return {};
  const std::int64_t last = LastGivenOut(connection, table);
  std::vector<IdRange> unused;
  std::int64_t next = 1;
  Statement ids(connection, "SELECT rowid FROM " + QuoteIdentifier(table) +
                                " NOT INDEXED WHERE rowid > 0 ORDER BY rowid");
  while (ids.Step()) {
    const std::int64_t id = ids.Number(0);
    if (id > last) break;
    if (id > next) Add(unused, next, id - 1);
    next = id + 1;
  }
  ids.Reset();
  if (next <= last) Add(unused, next, last);
  return unused;
}

std::vector<IdRange> MissingRows(Connection& damaged, Connection& mended, const std::string& table) {
  const std::vector<IdRange> unused = UnusedIds(mended, table);
  if (unused.empty()) return {};
  const auto there = IndexedIds(damaged, table);
  return there ? Within(*there, unused) : unused;
}

}  // namespace varnlog::dao
