#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "db/dao/sql/JetSqlLexer.h"

namespace varnlog::dao {

/// How tightly the outermost operator of an expression binds, the same in both languages as far as this
/// subset goes.
enum class Binding { kOr, kAnd, kNot, kCompare, kSum, kProduct, kUnary, kPrimary };

struct Expression {
  std::string storage;  // in the storage's SQL
  Binding binding = Binding::kPrimary;
  std::string field;    // the name when it is a plain field, else empty
  bool isText = false;  // known to be text: a literal or a concatenation
  bool isWholeNumber = false;

  /// As an operand where at least `needed` is required.
  [[nodiscard]] std::string AsOperand(Binding needed) const;
  /// With the collation attached when it is a computed text; a field has its own.
  [[nodiscard]] std::string Collated() const;
};

/// A field's name with its place and the table it is qualified with, checked when FROM has been read.
struct FieldUse {
  std::string table;  // empty when not qualified
  std::string field;
  std::size_t offset = 0;
};

/// Reads one expression after another from a lexer. What the storage's parser could not hold (nesting, number
/// of operands) is refused here, so that every text that passes is one the storage takes.
class ExpressionParser {
 public:
  explicit ExpressionParser(JetSqlLexer& lexer) : lexer_(lexer) {}

  Expression Parse() { return ParseOr(); }
  /// [Table.]field, and nothing else.
  Expression ParseField();

  [[nodiscard]] const std::vector<FieldUse>& fields() const { return fields_; }
  /// Takes back the last one, which turned out to be no field.
  void ForgetLastField() { fields_.pop_back(); }

 private:
  class Nesting;

  Expression ParseOr();
  Expression ParseAnd();
  Expression ParseNot();
  Expression ParseComparison();
  Expression ParseLike(const Expression& left, bool negated);
  Expression ParseBetween(const Expression& left, bool negated);
  Expression ParseIn(Expression left, bool negated);
  Expression ParseIsNull(const Expression& left);
  Expression ParseRelation(Expression left);
  Expression ParseConcatenation();
  Expression ParseSum();
  Expression ParseProduct();
  Expression ParseNegation();
  Expression ParsePrimary();
  Expression ParseConstant();
  [[nodiscard]] std::string ArithmeticOperand(const Expression& operand, Binding needed) const;

  JetSqlLexer& lexer_;
  std::vector<FieldUse> fields_;
  std::size_t nesting_ = 0;
  std::size_t operands_ = 0;
};

/// A text as the storage's literal, whatever bytes it has.
[[nodiscard]] std::string TextLiteral(const std::string& text);

}  // namespace varnlog::dao
