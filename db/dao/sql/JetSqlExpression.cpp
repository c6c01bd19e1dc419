#include "db/dao/sql/JetSqlExpression.h"

#include <string_view>
#include <utility>

#include "db/dao/sql/JetSql.h"

namespace varnlog::dao {
namespace {

/// The storage's parser has a stack of 100 entries; every construct below says how many it may leave there
/// while an operand is read, and the rest is for the statement around the expression.
constexpr std::size_t kDeepestNesting = 84;
/// Chains of operators make deep trees, of which the storage takes 1,000 levels.
constexpr std::size_t kMostOperands = 400;
/// A function of the storage takes 127 arguments.
constexpr std::size_t kMostConcatenated = 100;

Expression Condition(std::string storage, Binding binding) {
  return Expression{std::move(storage), binding, {}, false, false, true};
}

Expression Number(std::string storage, Binding binding) {
  return Expression{std::move(storage), binding, {}, false, false, false};
}

Expression Text(std::string storage) {
  return Expression{std::move(storage), Binding::kPrimary, {}, true, false, false};
}

Expression TextLiteral(const Dialect& dialect, const std::string& text) {
  Expression literal = Text(dialect.Text(text));
  literal.literal = text;
  return literal;
}

}  // namespace

/// Counts what the storage's parser will have on its stack; leaves with the construct that put it there.
class ExpressionParser::Nesting {
 public:
  Nesting(ExpressionParser& parser, std::size_t entries) : parser_(parser), entries_(entries) {
    parser_.nesting_ += entries_;
    if (parser_.nesting_ > kDeepestNesting) parser_.lexer_.Fail("Query is too complex");
  }
  ~Nesting() { parser_.nesting_ -= entries_; }
  Nesting(const Nesting&) = delete;
  Nesting& operator=(const Nesting&) = delete;

 private:
  ExpressionParser& parser_;
  std::size_t entries_;
};

std::string Expression::AsOperand(Binding needed) const {
  return binding < needed ? "(" + storage + ")" : storage;
}

Expression Dialect::Field(const std::string& name) const {
  return Expression{QuoteIdentifier(name), Binding::kPrimary, name, false, false, false};
}

Expression ExpressionParser::ParseOr() {
  Expression left = ParseAnd();
  while (lexer_.TakeWord("OR")) {
    const Nesting nesting(*this, 2);
    const std::string first = dialect_.AsCondition(std::move(left)).storage;
    left =
        Condition(first + " OR " + dialect_.AsCondition(ParseAnd()).AsOperand(Binding::kAnd), Binding::kOr);
  }
  return left;
}

Expression ExpressionParser::ParseAnd() {
  Expression left = ParseNot();
  while (lexer_.TakeWord("AND")) {
    const Nesting nesting(*this, 2);
    const std::string first = dialect_.AsCondition(std::move(left)).AsOperand(Binding::kAnd);
    left =
        Condition(first + " AND " + dialect_.AsCondition(ParseNot()).AsOperand(Binding::kNot), Binding::kAnd);
  }
  return left;
}

Expression ExpressionParser::ParseNot() {
  if (!lexer_.TakeWord("NOT")) return ParseComparison();
  const Nesting nesting(*this, 2);
  return Condition("NOT " + dialect_.AsCondition(ParseNot()).AsOperand(Binding::kNot), Binding::kNot);
}

Expression ExpressionParser::ParseComparison() {
  Expression left = ParseConcatenation();
  const Nesting nesting(*this, 5);
  if (lexer_.TakeWord("IS")) return ParseIsNull(left);
  const bool negated = lexer_.TakeWord("NOT");
  if (lexer_.TakeWord("LIKE")) return ParseLike(left, negated);
  if (lexer_.TakeWord("BETWEEN")) return ParseBetween(left, negated);
  if (lexer_.TakeWord("IN")) return ParseIn(left, negated);
  if (negated) lexer_.Fail();
  return ParseRelation(std::move(left));
}

Expression ExpressionParser::ParseIsNull(const Expression& left) {
  const bool negated = lexer_.TakeWord("NOT");
  lexer_.ExpectWord("NULL");
  return Condition(left.AsOperand(Binding::kSum) + (negated ? " IS NOT NULL" : " IS NULL"),
                   Binding::kCompare);
}

Expression ExpressionParser::ParseLike(const Expression& left, bool negated) {
  const Expression pattern = ParseConcatenation();
  return Condition((negated ? "NOT " : "") + dialect_.Like(left, pattern),
                   negated ? Binding::kNot : Binding::kPrimary);
}

Expression ExpressionParser::ParseBetween(const Expression& left, bool negated) {
  const Expression low = ParseConcatenation();
  lexer_.ExpectWord("AND");
  const Expression high = ParseConcatenation();
  return Condition(dialect_.Between(left, low, high, negated), Binding::kCompare);
}

Expression ExpressionParser::ParseIn(const Expression& left, bool negated) {
  lexer_.ExpectSymbol("(");
  std::vector<Expression> list;
  do {
    list.push_back(ParseConcatenation());
  } while (lexer_.TakeSymbol(","));
  lexer_.ExpectSymbol(")");
  return Condition(dialect_.In(left, list, negated), Binding::kCompare);
}

Expression ExpressionParser::ParseRelation(Expression left) {
  for (const std::string_view relation : {"=", "<>", "<=", ">=", "<", ">"}) {
    if (!lexer_.TakeSymbol(relation)) continue;
    const Expression right = ParseConcatenation();
    return Condition(dialect_.Comparison(left, relation, right), Binding::kCompare);
  }
  return left;
}

Expression ExpressionParser::ParseConcatenation() {
  Expression left = ParseSum();
  if (!lexer_.IsSymbol("&")) return left;
  const Nesting nesting(*this, 5);
  std::vector<Expression> parts = {std::move(left)};
  while (lexer_.TakeSymbol("&")) {
    if (parts.size() == kMostConcatenated) lexer_.Fail("Query is too complex");
    parts.push_back(ParseSum());
  }
  return Text(dialect_.Concatenation(parts));
}

std::string ExpressionParser::ArithmeticOperand(const Expression& operand, Binding needed) const {
  if (operand.isText) lexer_.Fail("Data type mismatch");
  return dialect_.AsValue(operand).AsOperand(needed);
}

Expression ExpressionParser::ParseSum() {
  Expression left = ParseProduct();
  while (lexer_.IsSymbol("+") || lexer_.IsSymbol("-")) {
    const Nesting nesting(*this, 2);
    std::string storage = ArithmeticOperand(left, Binding::kSum) + " " + lexer_.Take().text + " ";
    storage += ArithmeticOperand(ParseProduct(), Binding::kProduct);
    left = Number(std::move(storage), Binding::kSum);
  }
  return left;
}

Expression ExpressionParser::ParseProduct() {
  Expression left = ParseNegation();
  while (lexer_.IsSymbol("*") || lexer_.IsSymbol("/")) {
    const Nesting nesting(*this, 4);
    const bool divides = lexer_.Take().text == "/";
    std::string storage = ArithmeticOperand(left, Binding::kProduct);
    const std::string right = ArithmeticOperand(ParseNegation(), Binding::kUnary);
    storage = divides ? dialect_.Quotient(storage, right) : storage + " * " + right;
    left = Number(std::move(storage), Binding::kProduct);
  }
  return left;
}

Expression ExpressionParser::ParseNegation() {
  if (lexer_.TakeSymbol("+")) {
    const Nesting nesting(*this, 1);
    return ParseNegation();
  }
  if (!lexer_.TakeSymbol("-")) return ParsePrimary();
  const Nesting nesting(*this, 2);
  // "--" would begin a comment, so a second minus is put in parentheses.
  return Number("-" + ArithmeticOperand(ParseNegation(), Binding::kPrimary), Binding::kUnary);
}

Expression ExpressionParser::ParsePrimary() {
  if (++operands_ > kMostOperands) lexer_.Fail("Query is too complex");
  if (lexer_.TakeSymbol("(")) {
    // Five, because what stands in parentheses can become the first argument of a function.
    const Nesting nesting(*this, 5);
    Expression inner = ParseOr();
    lexer_.ExpectSymbol(")");
    return inner;
  }
  return lexer_.IsName() ? ParseField() : ParseConstant();
}

Expression ExpressionParser::ParseField() {
  if (!lexer_.IsName()) lexer_.Fail();
  FieldUse use;
  use.offset = lexer_.Peek().offset;
  use.field = lexer_.Take().text;
  if (lexer_.TakeSymbol(".")) {
    if (!lexer_.IsName()) lexer_.Fail();
    use.table = std::exchange(use.field, lexer_.Take().text);
  }
  fields_.push_back(use);
  return dialect_.Field(use.field);
}

Expression ExpressionParser::ParseConstant() {
  const Token& token = lexer_.Peek();
  switch (token.kind) {
    case TokenKind::kText:
      return TextLiteral(dialect_, lexer_.Take().text);
    case TokenKind::kDate:
      return Number("'" + lexer_.Take().text + "'", Binding::kPrimary);
    case TokenKind::kNumber: {
      const bool whole = token.text.find('.') == std::string::npos;
      return Expression{lexer_.Take().text, Binding::kPrimary, {}, false, whole, false};
    }
    default:
      break;
  }
  if (lexer_.TakeWord("TRUE") || lexer_.TakeWord("YES")) return Number("1", Binding::kPrimary);
  if (lexer_.TakeWord("FALSE") || lexer_.TakeWord("NO")) return Number("0", Binding::kPrimary);
  if (lexer_.TakeWord("NULL")) return Number("NULL", Binding::kPrimary);
  lexer_.Fail();
}

}  // namespace varnlog::dao
