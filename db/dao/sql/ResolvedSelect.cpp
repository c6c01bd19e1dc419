#include "db/dao/sql/ResolvedSelect.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "db/dao/EngineError.h"

namespace varnlog::dao {

namespace {

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

}  // namespace

ResolvedSelect::ResolvedSelect(SelectStatement statement, std::shared_ptr<const TableSchema> itsTable)
    : parsed(std::move(statement)), table(std::move(itsTable)) {
  RequireFields(parsed, *table);
  if (parsed.allFields)
    ResolveAllFields();
  else
    ResolveColumns();
}

void ResolvedSelect::ResolveAllFields() {
  allAreFields = true;
  fields = {table, &table->fields};
  for (std::size_t i = 0; i < table->fields.size(); ++i) {
    columns.push_back(QuoteIdentifier(table->fields[i].name));
    ordinals.push_back(i);
  }
}

void ResolvedSelect::ResolveColumns() {
  constexpr auto kNoField = std::numeric_limits<std::size_t>::max();
  auto defs = std::make_shared<std::vector<FieldDef>>();
  for (const SelectColumn& column : parsed.columns) {
    const std::size_t ordinal = column.isField ? table->FieldAt(column.field).value_or(kNoField) : kNoField;
    columns.push_back(column.storage);
    ordinals.push_back(ordinal);
    FieldDef def =
        ordinal != kNoField ? table->fields[ordinal] : FieldDef{.name = {}, .type = FieldType::kMemo};
    if (!SameName(def.name, column.name)) def.name = column.name;
    defs->push_back(std::move(def));
  }
  allAreFields = std::find(ordinals.begin(), ordinals.end(), kNoField) == ordinals.end();
  fields = std::move(defs);
}

std::string ResolvedSelect::ColumnList() const {
  std::string list;
  for (const std::string& column : columns) list += (list.empty() ? "" : ", ") + column;
  return list;
}

std::string ResolvedSelect::WhereClause(std::string_view further) const {
  std::string clause;
  if (!parsed.where.empty()) clause = " WHERE (" + parsed.where + ")";
  if (!further.empty()) clause.append(clause.empty() ? " WHERE (" : " AND (").append(further).append(")");
  return clause;
}

}  // namespace varnlog::dao
