#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace varnlog::dao {

/// One output column of a statement.
struct SelectColumn {
  std::string name;      // AS name, or the field's name
  std::string storage;   // expression in the storage's SQL
  bool isField = false;  // a plain field of the table
};

struct OrderTerm {
  std::string storage;  // expression in the storage's SQL
  std::string field;    // the field's name when it is a plain field, else empty
  bool descending = false;
};

/// One SELECT statement of the engine's SQL, taken apart and rewritten for the storage. The pieces are joined
/// by whoever runs them, because a dynaset asks for row ids where the text asks for fields.
struct SelectStatement {
  bool distinct = false;
  bool allFields = false;  // * or Table.*
  std::vector<SelectColumn> columns;
  std::string table;  // as written in the statement, unquoted
  std::string where;  // storage SQL without WHERE; empty when there is none
  std::vector<OrderTerm> orderBy;
};

/// Reads exactly one SELECT statement (a trailing ';' allowed) over one table and translates it: date
/// literals #m/d/yyyy[ h:mm:ss AM|PM]#, & with NULL as empty text, Like with * ? # [a-z] [!a-z], Between ...
/// And, In (...), Is [Not] Null, And, Or, Not, = <> < <= > >=, + - * /, [name], Table.name, AS, DISTINCT,
/// ORDER BY ... ASC|DESC, text in '...' or "..." with the quote doubled inside.
/// Anything else throws EngineError kSyntaxError whose text names the place in the statement.
[[nodiscard]] SelectStatement ParseSelect(std::string_view jetSql);

/// An identifier in the storage's quotes.
[[nodiscard]] std::string QuoteIdentifier(std::string_view name);

}  // namespace varnlog::dao
