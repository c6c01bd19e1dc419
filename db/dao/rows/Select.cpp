#include "db/dao/rows/Select.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "db/dao/sql/SelectShape.h"
#include "db/dao/sqlite/Connection.h"

namespace varnlog::dao {

namespace {

constexpr std::size_t kKeptStatements = 64;

void RequireFields(const SelectStatement& parsed, const TableSchema& table) {
  std::string unknown;
  int count = 0;
  for (const std::string& field : parsed.fields) {
    if (table.FieldAt(field)) continue;
    unknown += (count == 0 ? "'" : ", '") + field + "'";
    ++count;
  }
  if (count > 0)
    throw EngineError(ErrorNumber::kTooFewParameters, "Too few parameters. Expected " +
                                                          std::to_string(count) + ": " + unknown +
                                                          " is no field of '" + table.name + "'.");
}

void ResolveAllFields(Select& select) {
  select.allAreFields = true;
  select.fields = {select.table, &select.table->fields};
  for (std::size_t i = 0; i < select.table->fields.size(); ++i) {
    select.columns.push_back(QuoteIdentifier(select.table->fields[i].name));
    select.ordinals.push_back(i);
  }
}

void ResolveColumns(Select& select) {
  constexpr auto kNoField = std::numeric_limits<std::size_t>::max();
  auto fields = std::make_shared<std::vector<FieldDef>>();
  for (const SelectColumn& column : select.parsed.columns) {
    const std::size_t ordinal =
        column.isField ? select.table->FieldAt(column.field).value_or(kNoField) : kNoField;
    select.columns.push_back(column.storage);
    select.ordinals.push_back(ordinal);
    FieldDef def =
        ordinal != kNoField ? select.table->fields[ordinal] : FieldDef{.name = {}, .type = FieldType::kMemo};
    if (!SameName(def.name, column.name)) def.name = column.name;
    fields->push_back(std::move(def));
  }
  select.allAreFields =
      std::find(select.ordinals.begin(), select.ordinals.end(), kNoField) == select.ordinals.end();
  select.fields = std::move(fields);
}

std::shared_ptr<Select> Resolve(Connection& connection, SelectStatement parsed) {
  auto select = std::make_shared<Select>();
  select->table = connection.Table(parsed.table);
  RequireFields(parsed, *select->table);
  select->parsed = std::move(parsed);
  if (select->parsed.allFields)
    ResolveAllFields(*select);
  else
    ResolveColumns(*select);
  return select;
}

// Nothing when a mark did not come through the translation as a text of its own, or the statement is wrong
// (its own text then gives the better message).
std::shared_ptr<Select> ResolveShape(Connection& connection, const std::string& shape, std::size_t texts) {
  SelectStatement parsed;
  try {
    parsed = ParseSelect(shape);
  } catch (const EngineError&) {
    return nullptr;
  }
  if (!MarksToParameters(parsed.where, texts)) return nullptr;
  auto select = Resolve(connection, std::move(parsed));
  select->parameterCount = texts;
  return select;
}

}  // namespace

std::string Select::ColumnList() const {
  std::string list;
  for (const std::string& column : columns) list += (list.empty() ? "" : ", ") + column;
  return list;
}

std::string Select::WhereClause(std::string_view further) const {
  std::string clause;
  if (!parsed.where.empty()) clause = " WHERE (" + parsed.where + ")";
  if (!further.empty()) clause.append(clause.empty() ? " WHERE (" : " AND (").append(further).append(")");
  return clause;
}

Statement& Select::Prepared(Connection& connection, const std::string& storageSql) {
  Statement& statement = statements_[storageSql];
  if (statement.IsPrepared()) return statement;
  statement = Statement(connection, storageSql);
  if (!statement.IsReadOnly())
    throw EngineError(ErrorNumber::kSyntaxError, "Only a SELECT statement can be opened.");
  return statement;
}

void BindParameters(Statement& statement, const Parameters& parameters) {
  for (std::size_t i = 0; i < parameters.size(); ++i)
    statement.Bind(static_cast<int>(i) + 1, std::string_view(parameters[i]));
}

std::shared_ptr<Select> SelectCache::WholeTable(Connection& connection, std::string_view table) {
  return Resolve(connection, {.distinct = false,
                              .allFields = true,
                              .columns = {},
                              .table = std::string(table),
                              .where = {},
                              .orderBy = {},
                              .fields = {}});
}

std::shared_ptr<Select> SelectCache::Find(Connection& connection, std::string_view jetSql,
                                          Parameters& parameters) {
  const bool hasShape = LiftTexts(jetSql, shape_, parameters);
  if (hasShape) {
    const auto known = byShape_.find(shape_);
    if (known != byShape_.end()) {
      entries_.splice(entries_.begin(), entries_, known->second);
      if (entries_.front().select->parameterCount == 0) parameters.clear();
      return entries_.front().select;
    }
    if (auto select = ResolveShape(connection, shape_, parameters.size())) {
      Keep(shape_, select);
      return select;
    }
  }
  parameters.clear();
  return Resolve(connection, ParseSelect(jetSql));
}

void SelectCache::Keep(std::string shape, std::shared_ptr<Select> select) {
  entries_.push_front({std::move(shape), std::move(select)});
  byShape_.emplace(entries_.front().shape, entries_.begin());
  if (entries_.size() <= kKeptStatements) return;
  byShape_.erase(entries_.back().shape);
  entries_.pop_back();
}

}  // namespace varnlog::dao
