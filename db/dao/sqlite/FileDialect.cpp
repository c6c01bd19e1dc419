#include "db/dao/sqlite/FileDialect.h"

#include <algorithm>
#include <initializer_list>

#include "db/dao/sqlite/TextFunctions.h"

namespace varnlog::dao {

namespace {

std::string WithCollation(const Expression& text) {
  return text.AsOperand(Binding::kPrimary) + " COLLATE " + kCollationName;
}

/// The left operand of a comparison. It decides the collation unless a field takes part, which brings its
/// own.
std::string ComparisonLeft(const Expression& left, std::initializer_list<const Expression*> others) {
  const auto isField = [](const Expression* e) { return !e->field.empty(); };
  const auto isText = [](const Expression* e) { return e->isText; };
  const bool fieldDecides = !left.field.empty() || std::all_of(others.begin(), others.end(), isField);
  const bool anyText = left.isText || std::any_of(others.begin(), others.end(), isText);
  return fieldDecides || !anyText ? left.AsOperand(Binding::kSum) : WithCollation(left);
}

}  // namespace

std::string FileDialect::Text(const std::string& text) const {
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
  return QuoteText(text);
}

std::string FileDialect::Comparison(const Expression& left, std::string_view relation,
                                    const Expression& right) const {
  return ComparisonLeft(left, {&right}) + " " + std::string(relation) + " " + right.AsOperand(Binding::kSum);
}

std::string FileDialect::Between(const Expression& value, const Expression& low, const Expression& high,
                                 bool negated) const {
  return ComparisonLeft(value, {&low, &high}) + (negated ? " NOT BETWEEN " : " BETWEEN ") +
         low.AsOperand(Binding::kSum) + " AND " + high.AsOperand(Binding::kSum);
}

std::string FileDialect::In(const Expression& value, std::span<const Expression> list, bool negated) const {
  std::string items;
  bool anyText = value.isText;
  for (const Expression& item : list) {
    anyText = anyText || item.isText;
    items += (items.empty() ? "" : ", ") + item.storage;
  }
  // Here the storage never takes the collation from the right, not even from a field.
  const bool needsCollation = value.field.empty() && anyText;
  return (needsCollation ? WithCollation(value) : value.AsOperand(Binding::kSum)) +
         (negated ? " NOT IN (" : " IN (") + items + ")";
}

std::string FileDialect::Like(const Expression& value, const Expression& pattern) const {
  return "jet_like(" + pattern.storage + ", " + value.storage + ")";
}

std::string FileDialect::Concatenation(std::span<const Expression> parts) const {
  std::string arguments;
  for (const Expression& part : parts) arguments += (arguments.empty() ? "" : ", ") + part.storage;
  return "jet_concat(" + arguments + ")";
}

// The storage divides whole numbers without a remainder; the engine's 5 / 2 is 2.5.
std::string FileDialect::Quotient(const std::string& left, const std::string& right) const {
  return left + " / CAST(" + right + " AS REAL)";
}

std::string FileDialect::Column(const Expression& value) const {
  return value.field.empty() && value.isText ? WithCollation(value) : value.storage;
}

SelectStatement ParseSelect(std::string_view jetSql) {
  FileDialect dialect;
  return ParseSelect(jetSql, dialect);
}

}  // namespace varnlog::dao
