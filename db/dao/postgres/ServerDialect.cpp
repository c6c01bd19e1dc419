#include "db/dao/postgres/ServerDialect.h"

#include <algorithm>

#include "db/dao/EngineError.h"
#include "db/dao/postgres/ServerStorage.h"
#include "db/dao/postgres/ServerText.h"
#include "db/dao/sql/JetSql.h"
#include "db/dao/sql/LikePattern.h"

namespace varnlog::dao {

std::string ServerTextKey(const std::string& expression) {
  return "(jet_text(" + expression + ") COLLATE jet)";
}

std::string LikeExpression(std::string_view pattern) {
  return LikePattern(pattern).RegularExpression();
}

void ServerDialect::UseTable(std::string_view table) {
  table_ = storage_.Table(table);
}

Expression ServerDialect::Field(const std::string& name) const {
  Expression field = Dialect::Field(name);
  const auto ordinal = table_ == nullptr ? std::nullopt : table_->FieldAt(name);
  if (!ordinal) return field;  // whoever runs the statement says so
  const FieldDef& def = table_->fields[*ordinal];
  field.storage = QuoteIdentifier(def.name);
  field.isText = def.type == FieldType::kText || def.type == FieldType::kMemo;
  return field;
}

std::string ServerDialect::Text(const std::string& text) const {
  return QuoteText(ToServer(text)) + "::text";
}

Expression ServerDialect::AsCondition(Expression value) const {
  if (value.isCondition) return value;
  value.storage = "(" + value.AsOperand(Binding::kPrimary) + " <> 0)";
  value.binding = Binding::kPrimary;
  value.isCondition = true;
  return value;
}

Expression ServerDialect::AsValue(Expression condition) const {
  if (!condition.isCondition) return condition;
  condition.storage = "(" + condition.storage + ")::int";
  condition.binding = Binding::kPrimary;
  condition.isCondition = false;
  return condition;
}

std::string ServerDialect::Operand(const Expression& value, bool asText) const {
  const Expression plain = AsValue(value);
  if (!asText) return plain.AsOperand(Binding::kSum);
  return ServerTextKey(plain.isText ? plain.storage : "(" + plain.storage + ")::text");
}

std::string ServerDialect::Comparison(const Expression& left, std::string_view relation,
                                      const Expression& right) const {
  const bool asText = left.isText || right.isText;
  return Operand(left, asText) + " " + std::string(relation) + " " + Operand(right, asText);
}

std::string ServerDialect::Between(const Expression& value, const Expression& low, const Expression& high,
                                   bool negated) const {
  const bool asText = value.isText || low.isText || high.isText;
  return Operand(value, asText) + (negated ? " NOT BETWEEN " : " BETWEEN ") + Operand(low, asText) + " AND " +
         Operand(high, asText);
}

std::string ServerDialect::In(const Expression& value, std::span<const Expression> list, bool negated) const {
  const bool asText =
      value.isText || std::ranges::any_of(list, [](const Expression& item) { return item.isText; });
  std::string items;
  for (const Expression& item : list) items += (items.empty() ? "" : ", ") + Operand(item, asText);
  return Operand(value, asText) + (negated ? " NOT IN (" : " IN (") + items + ")";
}

std::string ServerDialect::Like(const Expression& value, const Expression& pattern) const {
  if (!pattern.literal)
    throw EngineError(ErrorNumber::kNotSupported, "On a server Like takes a pattern that is written out.");
  const Expression plain = AsValue(value);
  const std::string text = plain.isText ? plain.storage : "(" + plain.storage + ")::text";
  return "(jet_fold(" + text + ") ~ " + QuoteText(ToServer(LikeExpression(*pattern.literal))) + ")";
}

std::string ServerDialect::Concatenation(std::span<const Expression> parts) const {
  std::string arguments;
  for (const Expression& part : parts) arguments += (arguments.empty() ? "" : ", ") + AsValue(part).storage;
  return "concat(" + arguments + ")";
}

std::string ServerDialect::Quotient(const std::string& left, const std::string& right) const {
  return left + " / nullif(" + right + ", 0)::float8";
}

std::string ServerDialect::Column(const Expression& value) const {
  return AsValue(value).storage;
}

std::string ServerDialect::OrderTerm(const Expression& value) const {
  return value.isText ? ServerTextKey(value.storage) : AsValue(value).storage;
}

}  // namespace varnlog::dao
