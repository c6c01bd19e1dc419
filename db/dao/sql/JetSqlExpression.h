#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "db/dao/sql/Dialect.h"
#include "db/dao/sql/JetSqlLexer.h"

namespace varnlog::dao {

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
  ExpressionParser(JetSqlLexer& lexer, const Dialect& dialect) : lexer_(lexer), dialect_(dialect) {}

  Expression Parse() { return ParseOr(); }
  /// The same for WHERE.
  Expression ParseCondition() { return dialect_.AsCondition(ParseOr()); }
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
  Expression ParseIn(const Expression& left, bool negated);
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
  const Dialect& dialect_;
  std::vector<FieldUse> fields_;
  std::size_t nesting_ = 0;
  std::size_t operands_ = 0;
};

}  // namespace varnlog::dao
