#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace varnlog::dao {

class Dialect;

/// One output column of a statement.
struct SelectColumn {
  std::string name;      // AS name, the field's name, or Expr1000, Expr1001, ... for a nameless expression
  std::string storage;   // expression in the storage's SQL
  std::string order;     // the same as a term of the order
  bool isField = false;  // a plain field of the table
  std::string field;     // that field's name, else empty
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
  bool allFields = false;             // * or Table.*; there are no other columns then
  std::vector<SelectColumn> columns;  // as written
  std::string table;                  // as written in the statement, unquoted
  std::string where;                  // storage SQL without WHERE; empty when there is none
  std::vector<OrderTerm> orderBy;     // positions and AS names replaced by what they stand for
  /// Every field named anywhere in the statement, each once, as first written. Whoever runs the statement
  /// checks them against the table first: the storage takes an unknown quoted name for a text.
  std::vector<std::string> fields;
};

/// Reads exactly one SELECT statement (a trailing ';' allowed) over one table and translates it: date
/// literals #m/d/yyyy[ h:mm:ss[ AM|PM]]#, & with NULL as empty text, Like with * ? # [a-z] [!a-z], Between
/// ... And, In (...), Is [Not] Null, And, Or, Not, = <> < <= > >=, + - * /, [name], Table.name, AS, DISTINCT,
/// ORDER BY ... ASC|DESC, True, False, Yes, No, Null, text in '...' or "..." with the quote doubled inside.
///
/// A date literal is month first, always: a day and month the other way round, or a day that the month does
/// not have, is an error and never a guess. Comparisons do not chain (a = b = c).
///
/// Throws EngineError: kTooFewParameters for a field qualified with another table than the statement's,
/// kSyntaxError for anything else, both with a text that names the place in the statement.
[[nodiscard]] SelectStatement ParseSelect(std::string_view jetSql, Dialect& dialect);

/// An identifier in the storage's quotes.
[[nodiscard]] std::string QuoteIdentifier(std::string_view name);
/// A text in the storage's quotes. It must hold no zero byte.
[[nodiscard]] std::string QuoteText(std::string_view text);

}  // namespace varnlog::dao
