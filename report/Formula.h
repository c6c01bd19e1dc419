#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>

#include "platform/DateTime.h"

namespace varnlog::report {

/// What a formula computes with: text, number, date, yes/no (of a comparison only).
using FormulaValue = std::variant<std::string, double, platform::DateTime, bool>;

/// A formula that cannot be read or computed; the text names the formula's place (1-based character) and what
/// is wrong there.
class FormulaError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Where a formula's values come from while one line or page is laid out.
class FormulaContext {
 public:
  virtual ~FormulaContext() = default;
  /// The value of {dao.NAME}; NULL is an empty text. Throws FormulaError for a name the data does not have.
  [[nodiscard]] virtual FormulaValue Field(std::string_view name) const = 0;
  [[nodiscard]] virtual std::int64_t PageNumber() const = 0;
  [[nodiscard]] virtual std::int64_t TotalPageCount() const = 0;
  [[nodiscard]] virtual std::int64_t RecordNumber() const = 0;
  /// Rows of the report.
  [[nodiscard]] virtual std::int64_t Count() const = 0;
  [[nodiscard]] virtual platform::DateTime PrintDate() const = 0;
};

/// A formula field's text, read once and computed for each line:
///
///   expression := 'if' sum '=' sum 'then' expression 'else' expression | sum
///   sum        := value { '+' value }             texts are joined, numbers added
///   value      := "text" | number | {dao.FIELD} | '(' expression ')'
///               | ToText '(' expression [ ',' expression ] ')'
///               | Count '(' {dao.FIELD} ')'
///               | PageNumber | TotalPageCount | RecordNumber | PrintDate
///
/// Words are read without regard to letter case; a quote inside a text is doubled. ToText of a number takes
/// the number of decimals, ToText of a date a picture of d, dd, M, MM, yy, yyyy and separators.
class Formula {
 public:
  /// Throws FormulaError.
  explicit Formula(std::string_view text);
  ~Formula();
  Formula(Formula&&) noexcept;
  Formula& operator=(Formula&&) noexcept;

  [[nodiscard]] FormulaValue Evaluate(const FormulaContext& context) const;
  /// The value as text: numbers with two decimals, dates as day.month.year.
  [[nodiscard]] std::string EvaluateText(const FormulaContext& context) const;

  struct Node;

 private:
  std::unique_ptr<const Node> root_;
};

/// A text as a constant of a formula, its quotes doubled.
[[nodiscard]] std::string FormulaQuoted(std::string_view text);

/// The date by a picture: runs of d, M and y stand for day, month and year, anything else for itself.
[[nodiscard]] std::string FormatPicture(platform::DateTime date, std::string_view picture);

}  // namespace varnlog::report
