#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace varnlog::dao {

/// How tightly the outermost operator of an expression binds, the same in all languages as far as this
/// subset goes.
enum class Binding { kOr, kAnd, kNot, kCompare, kSum, kProduct, kUnary, kPrimary };

struct Expression {
  std::string storage;  // in the storage's SQL
  Binding binding = Binding::kPrimary;
  std::string field;    // the name when it is a plain field, else empty
  bool isText = false;  // known to be text: a literal, a concatenation, or a field where the dialect says so
  bool isWholeNumber = false;
  bool isCondition = false;                 // true or false, not a value of a field
  std::optional<std::string> literal = {};  // of a text that is written out

  /// As an operand where at least `needed` is required.
  [[nodiscard]] std::string AsOperand(Binding needed) const;
};

/// The SQL of a storage: how the parts of the engine's SQL are written in it that not all have in common.
/// AND, OR, NOT, IS NULL, + - * and parentheses are the same everywhere.
class Dialect {
 public:
  virtual ~Dialect() = default;

  /// The statement's table, before any of its fields is asked for.
  virtual void UseTable(std::string_view /*table*/) {}
  [[nodiscard]] virtual Expression Field(const std::string& name) const;
  /// A text as a literal, whatever bytes it has.
  [[nodiscard]] virtual std::string Text(const std::string& text) const = 0;
  /// What a comparison, or a plain value, is as the operand of AND, OR and NOT ...
  [[nodiscard]] virtual Expression AsCondition(Expression value) const { return value; }
  /// ... and a condition as a value.
  [[nodiscard]] virtual Expression AsValue(Expression condition) const { return condition; }

  /// By the engine's order of texts where texts are compared.
  [[nodiscard]] virtual std::string Comparison(const Expression& left, std::string_view relation,
                                               const Expression& right) const = 0;
  [[nodiscard]] virtual std::string Between(const Expression& value, const Expression& low,
                                            const Expression& high, bool negated) const = 0;
  [[nodiscard]] virtual std::string In(const Expression& value, std::span<const Expression> list,
                                       bool negated) const = 0;
  /// A primary.
  [[nodiscard]] virtual std::string Like(const Expression& value, const Expression& pattern) const = 0;
  /// NULL is an empty text.
  [[nodiscard]] virtual std::string Concatenation(std::span<const Expression> parts) const = 0;
  /// Of numbers, with a remainder.
  [[nodiscard]] virtual std::string Quotient(const std::string& left, const std::string& right) const = 0;
  /// A column of the result.
  [[nodiscard]] virtual std::string Column(const Expression& value) const = 0;
  /// A term of the order.
  [[nodiscard]] virtual std::string OrderTerm(const Expression& value) const = 0;
};

}  // namespace varnlog::dao
