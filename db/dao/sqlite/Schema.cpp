#include "db/dao/sqlite/Schema.h"

#include <algorithm>
#include <charconv>

#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/TextFunctions.h"

namespace varnlog::dao {

namespace {

struct TypeName {
  std::string_view declared;
  FieldType type;
};

constexpr TypeName kTypeNames[] = {
    {"yesno", FieldType::kBoolean}, {"datetime", FieldType::kDate}, {"long", FieldType::kLong},
    {"integer", FieldType::kLong},  {"int", FieldType::kLong},      {"double", FieldType::kDouble},
    {"real", FieldType::kDouble},   {"text", FieldType::kMemo},     {"memo", FieldType::kMemo},
};

// "TEXT(32)" is a text of at most 32 characters, "TEXT" a memo; what another program declared otherwise is
// read as a memo too.
FieldDef FieldFromDeclaration(std::string name, std::string_view declaration) {
  FieldDef field{.name = std::move(name), .type = FieldType::kMemo};
  const std::string lower = LowerName(declaration);
  const std::size_t parenthesis = lower.find('(');
  const std::string_view word = std::string_view(lower).substr(0, parenthesis);
  for (const TypeName& each : kTypeNames)
    if (word == each.declared) field.type = each.type;
  if (field.type == FieldType::kMemo && parenthesis != std::string::npos) {
    std::from_chars(lower.data() + parenthesis + 1, lower.data() + lower.size(), field.size);
    if (field.size > 0) field.type = FieldType::kText;
  }
  return field;
}

// Only plain numbers and texts are taken; an expression in a file from elsewhere is never evaluated.
Value DefaultFromText(std::string_view text, FieldType type) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isNumber = error == std::errc() && end == text.data() + text.size();
  if (isNumber && type == FieldType::kBoolean) return number != 0;
  if (isNumber) return number;
  if (text.size() >= 2 && text.front() == '\'' && text.find('\'', 1) == text.size() - 1)
    return std::string(text.substr(1, text.size() - 2));
  return {};
}

void ReadFields(Connection& connection, TableSchema& table, std::vector<std::string>& keyFields) {
  Statement columns(connection, "SELECT name, type, dflt_value, pk FROM pragma_table_info(?1)");
  columns.Bind(1, std::string_view(table.name));
  std::size_t declaredIntegers = 0;
  while (columns.Step()) {
    FieldDef field = FieldFromDeclaration(std::string(columns.Text(0)), columns.Text(1));
    const bool isInteger = SameName(columns.Text(1), "INTEGER");
    if (columns.Number(3) > 0) {
      keyFields.push_back(field.name);
      if (isInteger) ++declaredIntegers;
    }
    table.defaults.push_back(DefaultFromText(columns.Text(2), field.type));
    table.fields.push_back(std::move(field));
  }
  // A single integer key is the row's own number, which the storage gives out.
  if (keyFields.size() == 1 && declaredIntegers == 1) {
    table.fields[*table.FieldAt(keyFields.front())].isCounter = true;
    table.defaults[*table.FieldAt(keyFields.front())] = {};
  }
}

// An index may be stored in another order than the one in which Seek takes its values. The order for Seek
// then stands in its declaration: CREATE INDEX i ON t (b, a /* seek: a, b */).
std::vector<std::string> SeekOrder(std::string_view declaration, std::vector<std::string> stored) {
  constexpr std::string_view kMark = "/* seek:";
  const std::size_t begin = declaration.find(kMark);
  if (begin == std::string_view::npos) return stored;
  std::string_view list = declaration.substr(begin + kMark.size());
  list = list.substr(0, list.find("*/"));
  std::vector<std::string> order;
  while (!list.empty()) {
    const std::size_t comma = std::min(list.find(','), list.size());
    std::string_view name = list.substr(0, comma);
    while (!name.empty() && name.front() == ' ') name.remove_prefix(1);
    while (!name.empty() && name.back() == ' ') name.remove_suffix(1);
    order.emplace_back(name);
    list.remove_prefix(std::min(comma + 1, list.size()));
  }
  const bool isSame = std::is_permutation(order.begin(), order.end(), stored.begin(), stored.end(), SameName);
  return isSame ? order : stored;
}

std::vector<std::string> StoredFields(Connection& connection, std::string_view index) {
  Statement columns(connection, "SELECT name FROM pragma_index_info(?1) ORDER BY seqno");
  columns.Bind(1, index);
  std::vector<std::string> fields;
  while (columns.Step()) fields.emplace_back(columns.Text(0));
  return fields;
}

void ReadIndexes(Connection& connection, TableSchema& table, std::vector<std::string> keyFields) {
  if (!keyFields.empty()) {
    table.firstStoredFields.push_back(keyFields.front());
    table.indexes.push_back(
        {.name = "PrimaryKey", .fields = std::move(keyFields), .isPrimary = true, .isUnique = true});
  }
  Statement indexes(
      connection,
      "SELECT l.name, l.\"unique\", s.sql FROM pragma_index_list(?1) AS l JOIN sqlite_schema AS s "
      "ON s.type = 'index' AND s.name = l.name WHERE l.origin = 'c' AND NOT l.partial "
      "ORDER BY l.seq DESC");
  indexes.Bind(1, std::string_view(table.name));
  while (indexes.Step()) {
    Index index{.name = std::string(indexes.Text(0)),
                .fields = {},
                .isPrimary = false,
                .isUnique = indexes.Number(1) != 0};
    std::vector<std::string> stored = StoredFields(connection, index.name);
    table.firstStoredFields.push_back(stored.empty() ? std::string() : stored.front());
    index.fields = SeekOrder(indexes.Text(2), std::move(stored));
    table.indexes.push_back(std::move(index));
  }
}

}  // namespace

std::string DeclaredType(const FieldDef& field) {
  switch (field.type) {
    case FieldType::kBoolean:
      return "YESNO DEFAULT 0";
    case FieldType::kLong:
      return "INTEGER";
    case FieldType::kDouble:
      return "DOUBLE";
    case FieldType::kDate:
      return "DATETIME";
    case FieldType::kText:
      return "TEXT(" + std::to_string(field.size) + ") COLLATE " + kCollationName;
    case FieldType::kMemo:
      break;
  }
  // Not "MEMO": the storage would turn a text of digits in such a field into a number.
  return std::string("TEXT COLLATE ") + kCollationName;
}

TableSchema ReadTableSchema(Connection& connection, std::string_view name) {
  ReadScope scope(connection);
  Statement find(connection,
                 "SELECT name FROM sqlite_schema WHERE type = 'table' AND name = ?1 COLLATE NOCASE "
                 "AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\'");
  find.Bind(1, name);
  TableSchema table;
  {
    ResetAtEnd reset(find);
    if (!find.Step())
      throw EngineError(ErrorNumber::kTableNotFound,
                        "There is no table or query '" + std::string(name) + "'.");
    table.name = find.Text(0);
  }
  std::vector<std::string> keyFields;
  ReadFields(connection, table, keyFields);
  ReadIndexes(connection, table, std::move(keyFields));
  return table;
}

std::vector<std::string> ReadTableNames(Connection& connection) {
  Statement tables(connection,
                   "SELECT name FROM sqlite_schema WHERE type = 'table' "
                   "AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY rowid");
  std::vector<std::string> names;
  while (tables.Step()) names.emplace_back(tables.Text(0));
  return names;
}

}  // namespace varnlog::dao
