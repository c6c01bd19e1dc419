#include "db/dao/sql/JetSqlExpression.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/Collation.h"

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
  return Expression{std::move(storage), binding, {}, false, false};
}

Expression Text(std::string storage) {
  return Expression{std::move(storage), Binding::kPrimary, {}, true, false};
}

/// The left operand of a comparison. It decides the collation unless a field takes part, which brings its
/// own.
std::string ComparisonLeft(const Expression& left, std::initializer_list<const Expression*> others) {
  const auto isField = [](const Expression* e) { return !e->field.empty(); };
  const auto isText = [](const Expression* e) { return e->isText; };
  const bool fieldDecides = !left.field.empty() || std::all_of(others.begin(), others.end(), isField);
  const bool anyText = left.isText || std::any_of(others.begin(), others.end(), isText);
  if (fieldDecides || !anyText) return left.AsOperand(Binding::kSum);
  return left.AsOperand(Binding::kPrimary) + " COLLATE " + kCollationName;
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

std::string Expression::Collated() const {
  if (!field.empty() || !isText) return storage;
  return AsOperand(Binding::kPrimary) + " COLLATE " + kCollationName;
}

std::string TextLiteral(const std::string& text) {
  // The storage reads a statement up to its first zero byte, so such a text goes in as hexadecimal digits.
  if (text.find('\0') != std::string::npos) {
    static constexpr std::string_view kDigits = "0123456789abcdef";
    std::string literal = "CAST(x'";
    for (const char c : text) {
      const auto byte = static_cast<unsigned char>(c);
      literal += kDigits[byte >> 4U];
      literal += kDigits[byte & 0x0FU];
    }
    return literal + "' AS TEXT)";
  }
  std::string literal = "'";
  for (const char c : text) {
    if (c == '\'') literal += '\'';
    literal += c;
  }
  return literal + "'";
}

Expression ExpressionParser::ParseOr() {
  Expression left = ParseAnd();
  while (lexer_.TakeWord("OR")) {
    const Nesting nesting(*this, 2);
    left = Condition(left.storage + " OR " + ParseAnd().AsOperand(Binding::kAnd), Binding::kOr);
  }
  return left;
}

Expression ExpressionParser::ParseAnd() {
  Expression left = ParseNot();
  while (lexer_.TakeWord("AND")) {
    const Nesting nesting(*this, 2);
    left = Condition(left.AsOperand(Binding::kAnd) + " AND " + ParseNot().AsOperand(Binding::kNot),
                     Binding::kAnd);
  }
  return left;
}

Expression ExpressionParser::ParseNot() {
  if (!lexer_.TakeWord("NOT")) return ParseComparison();
  const Nesting nesting(*this, 2);
  return Condition("NOT " + ParseNot().AsOperand(Binding::kNot), Binding::kNot);
}

Expression ExpressionParser::ParseComparison() {
  Expression left = ParseConcatenation();
  const Nesting nesting(*this, 5);
  if (lexer_.TakeWord("IS")) return ParseIsNull(left);
  const bool negated = lexer_.TakeWord("NOT");
  if (lexer_.TakeWord("LIKE")) return ParseLike(left, negated);
  if (lexer_.TakeWord("BETWEEN")) return ParseBetween(left, negated);
  if (lexer_.TakeWord("IN")) return ParseIn(std::move(left), negated);
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
  return Condition(
      std::string(negated ? "NOT " : "") + "jet_like(" + pattern.storage + ", " + left.storage + ")",
      negated ? Binding::kNot : Binding::kPrimary);
}

Expression ExpressionParser::ParseBetween(const Expression& left, bool negated) {
  const Expression low = ParseConcatenation();
  lexer_.ExpectWord("AND");
  const Expression high = ParseConcatenation();
  return Condition(ComparisonLeft(left, {&low, &high}) + (negated ? " NOT BETWEEN " : " BETWEEN ") +
                       low.AsOperand(Binding::kSum) + " AND " + high.AsOperand(Binding::kSum),
                   Binding::kCompare);
}

Expression ExpressionParser::ParseIn(Expression left, bool negated) {
  lexer_.ExpectSymbol("(");
  std::string list;
  bool anyText = left.isText;
  do {
    const Expression item = ParseConcatenation();
    anyText = anyText || item.isText;
    list += (list.empty() ? "" : ", ") + item.storage;
  } while (lexer_.TakeSymbol(","));
  lexer_.ExpectSymbol(")");
  // Here the storage never takes the collation from the right, not even from a field.
  if (left.field.empty() && anyText)
    left = Text(left.AsOperand(Binding::kPrimary) + " COLLATE " + kCollationName);
  return Condition(left.AsOperand(Binding::kSum) + (negated ? " NOT IN (" : " IN (") + list + ")",
                   Binding::kCompare);
}

Expression ExpressionParser::ParseRelation(Expression left) {
  for (const std::string_view relation : {"=", "<>", "<=", ">=", "<", ">"}) {
    if (!lexer_.TakeSymbol(relation)) continue;
    const Expression right = ParseConcatenation();
    return Condition(
        ComparisonLeft(left, {&right}) + " " + std::string(relation) + " " + right.AsOperand(Binding::kSum),
        Binding::kCompare);
  }
  return left;
}

Expression ExpressionParser::ParseConcatenation() {
  Expression left = ParseSum();
  if (!lexer_.IsSymbol("&")) return left;
  const Nesting nesting(*this, 5);
  std::string arguments = left.storage;
  std::size_t count = 1;
  while (lexer_.TakeSymbol("&")) {
    if (++count > kMostConcatenated) lexer_.Fail("Query is too complex");
    arguments += ", " + ParseSum().storage;
  }
  return Text("jet_concat(" + arguments + ")");
}

std::string ExpressionParser::ArithmeticOperand(const Expression& operand, Binding needed) const {
  if (operand.isText) lexer_.Fail("Data type mismatch");
  return operand.AsOperand(needed);
}

Expression ExpressionParser::ParseSum() {
  Expression left = ParseProduct();
  while (lexer_.IsSymbol("+") || lexer_.IsSymbol("-")) {
    const Nesting nesting(*this, 2);
    std::string storage = ArithmeticOperand(left, Binding::kSum) + " " + lexer_.Take().text + " ";
    storage += ArithmeticOperand(ParseProduct(), Binding::kProduct);
    left = Condition(std::move(storage), Binding::kSum);
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
    // The storage divides whole numbers without a remainder; the engine's 5 / 2 is 2.5.
    storage += divides ? " / CAST(" + right + " AS REAL)" : " * " + right;
    left = Condition(std::move(storage), Binding::kProduct);
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
  return Condition("-" + ArithmeticOperand(ParseNegation(), Binding::kPrimary), Binding::kUnary);
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
  return Expression{QuoteIdentifier(use.field), Binding::kPrimary, use.field, false, false};
}

Expression ExpressionParser::ParseConstant() {
  const Token& token = lexer_.Peek();
  switch (token.kind) {
    case TokenKind::kText:
      return Text(TextLiteral(lexer_.Take().text));
    case TokenKind::kDate:
      return Condition("'" + lexer_.Take().text + "'", Binding::kPrimary);
    case TokenKind::kNumber: {
      const bool whole = token.text.find('.') == std::string::npos;
      return Expression{lexer_.Take().text, Binding::kPrimary, {}, false, whole};
    }
    default:
      break;
  }
  if (lexer_.TakeWord("TRUE") || lexer_.TakeWord("YES")) return Condition("1", Binding::kPrimary);
  if (lexer_.TakeWord("FALSE") || lexer_.TakeWord("NO")) return Condition("0", Binding::kPrimary);
  if (lexer_.TakeWord("NULL")) return Condition("NULL", Binding::kPrimary);
  lexer_.Fail();
}

}  // namespace varnlog::dao
