#include "db/dao/sql/JetSql.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "db/dao/EngineError.h"
#include "db/dao/sql/JetSqlExpression.h"
#include "db/dao/sql/JetSqlLexer.h"
#include "db/dao/storage/TableSchema.h"

namespace varnlog::dao {
namespace {

class SelectParser {
 public:
  SelectParser(std::string_view text, Dialect& dialect)
      : lexer_(text), dialect_(dialect), expressions_(lexer_, dialect) {}

  SelectStatement Parse();

 private:
  void TellTable();
  void ParseColumns();
  bool TakeAllFields();
  void ParseColumn();
  void ParseFrom();
  void ParseOrderBy();
  OrderTerm ParseOrderTerm();
  [[nodiscard]] const SelectColumn& ColumnAt(const Expression& position, std::size_t offset) const;
  [[nodiscard]] const SelectColumn* ColumnNamed(const Expression& term) const;
  void CheckFields();

  JetSqlLexer lexer_;
  Dialect& dialect_;
  ExpressionParser expressions_;
  SelectStatement statement_;
  FieldUse allFieldsOf_;  // the table of Table.*
};

SelectStatement SelectParser::Parse() {
  TellTable();
  lexer_.ExpectWord("SELECT");
  statement_.distinct = lexer_.TakeWord("DISTINCT");
  ParseColumns();
  ParseFrom();
  if (lexer_.TakeWord("WHERE")) statement_.where = expressions_.ParseCondition().storage;
  if (lexer_.TakeWord("ORDER")) ParseOrderBy();
  lexer_.TakeSymbol(";");
  if (lexer_.Peek().kind != TokenKind::kEnd) lexer_.Fail();
  CheckFields();
  return std::move(statement_);
}

// The table comes behind the columns, and how they are written can depend on it. What is wrong in the
// statement is said when it is read.
void SelectParser::TellTable() {
  const JetSqlLexer begin = lexer_;
  try {
    while (lexer_.Peek().kind != TokenKind::kEnd && !lexer_.TakeWord("FROM")) lexer_.Take();
    if (lexer_.IsName()) dialect_.UseTable(lexer_.Peek().text);
  } catch (const EngineError& error) {
    if (error.number() != ErrorNumber::kSyntaxError) throw;
  }
  lexer_ = begin;
}

void SelectParser::ParseColumns() {
  if (TakeAllFields()) {
    statement_.allFields = true;
    return;
  }
  do {
    ParseColumn();
  } while (lexer_.TakeSymbol(","));
}

bool SelectParser::TakeAllFields() {
  if (lexer_.TakeSymbol("*")) return true;
  const JetSqlLexer here = lexer_;
  if (lexer_.IsName()) {
    FieldUse use{lexer_.Peek().text, "*", lexer_.Peek().offset};
    lexer_.Take();
    if (lexer_.TakeSymbol(".") && lexer_.TakeSymbol("*")) {
      allFieldsOf_ = std::move(use);
      return true;
    }
  }
  lexer_ = here;
  return false;
}

void SelectParser::ParseColumn() {
  const Expression value = expressions_.Parse();
  SelectColumn column{value.field, dialect_.Column(value), dialect_.OrderTerm(value), !value.field.empty(),
                      value.field};
  if (lexer_.TakeWord("AS")) {
    if (!lexer_.IsName()) lexer_.Fail();
    column.name = lexer_.Take().text;
  } else if (!column.isField) {
    column.name = "Expr" + std::to_string(1000 + statement_.columns.size());
  }
  statement_.columns.push_back(std::move(column));
}

void SelectParser::ParseFrom() {
  lexer_.ExpectWord("FROM");
  if (!lexer_.IsName()) lexer_.Fail("Syntax error in FROM clause");
  statement_.table = lexer_.Take().text;
}

void SelectParser::ParseOrderBy() {
  lexer_.ExpectWord("BY");
  do {
    statement_.orderBy.push_back(ParseOrderTerm());
  } while (lexer_.TakeSymbol(","));
}

OrderTerm SelectParser::ParseOrderTerm() {
  const std::size_t offset = lexer_.Peek().offset;
  const std::size_t fieldsBefore = expressions_.fields().size();
  const Expression value = expressions_.Parse();
  OrderTerm term{dialect_.OrderTerm(value), value.field, false};
  if (value.isWholeNumber) {
    const SelectColumn& column = ColumnAt(value, offset);
    term = OrderTerm{column.order, column.field, false};
  } else if (expressions_.fields().size() == fieldsBefore) {
    // The storage would take some constants for positions.
    lexer_.FailAt(offset, "Order by a constant");
  } else if (const SelectColumn* column = ColumnNamed(value)) {
    expressions_.ForgetLastField();
    term = OrderTerm{column->order, column->field, false};
  }
  term.descending = lexer_.TakeWord("DESC");
  if (!term.descending) lexer_.TakeWord("ASC");
  return term;
}

const SelectColumn& SelectParser::ColumnAt(const Expression& position, std::size_t offset) const {
  const std::size_t ordinal = position.storage.size() > 4 ? 0 : std::stoul(position.storage);
  if (ordinal < 1 || ordinal > statement_.columns.size()) lexer_.FailAt(offset, "Invalid column position");
  return statement_.columns[ordinal - 1];
}

const SelectColumn* SelectParser::ColumnNamed(const Expression& term) const {
  if (term.field.empty() || !expressions_.fields().back().table.empty()) return nullptr;
  const auto& columns = statement_.columns;
  const auto named = std::find_if(columns.begin(), columns.end(), [&term](const SelectColumn& column) {
    return SameName(column.name, term.field);
  });
  return named == columns.end() ? nullptr : &*named;
}

void SelectParser::CheckFields() {
  const auto check = [this](const FieldUse& use) {
    if (use.table.empty() || SameName(use.table, statement_.table)) return;
    throw EngineError(ErrorNumber::kTooFewParameters, "Too few parameters. Expected 1: '" + use.table + "." +
                                                          use.field + "' is no field of '" +
                                                          statement_.table + "'.");
  };
  check(allFieldsOf_);
  for (const FieldUse& use : expressions_.fields()) {
    check(use);
    const auto known = [&use](const std::string& field) { return SameName(field, use.field); };
    auto& fields = statement_.fields;
    if (std::none_of(fields.begin(), fields.end(), known)) fields.push_back(use.field);
  }
}

}  // namespace

SelectStatement ParseSelect(std::string_view jetSql, Dialect& dialect) {
  return SelectParser(jetSql, dialect).Parse();
}

std::string QuoteText(std::string_view text) {
  std::string literal = "'";
  for (const char c : text) {
    if (c == '\'') literal += '\'';
    literal += c;
  }
  return literal + "'";
}

std::string QuoteIdentifier(std::string_view name) {
  std::string quoted = "\"";
  for (const char c : name) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + "\"";
}

}  // namespace varnlog::dao
