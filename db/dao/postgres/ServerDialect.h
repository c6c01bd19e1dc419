#pragma once

#include <memory>
#include <string>

#include "db/dao/sql/Dialect.h"
#include "db/dao/storage/TableSchema.h"

namespace varnlog::dao {

class ServerStorage;

/// The engine's SQL on a server. A text is compared with the collation of the log's schema in the form that
/// the schema's function jet_text gives it, and matched by Like in the form of jet_fold.
class ServerDialect final : public Dialect {
 public:
  explicit ServerDialect(ServerStorage& storage) : storage_(storage) {}

  void UseTable(std::string_view table) override;
  [[nodiscard]] Expression Field(const std::string& name) const override;
  [[nodiscard]] std::string Text(const std::string& text) const override;
  [[nodiscard]] Expression AsCondition(Expression value) const override;
  [[nodiscard]] Expression AsValue(Expression condition) const override;
  [[nodiscard]] std::string Comparison(const Expression& left, std::string_view relation,
                                       const Expression& right) const override;
  [[nodiscard]] std::string Between(const Expression& value, const Expression& low, const Expression& high,
                                    bool negated) const override;
  [[nodiscard]] std::string In(const Expression& value, std::span<const Expression> list,
                               bool negated) const override;
  [[nodiscard]] std::string Like(const Expression& value, const Expression& pattern) const override;
  [[nodiscard]] std::string Concatenation(std::span<const Expression> parts) const override;
  [[nodiscard]] std::string Quotient(const std::string& left, const std::string& right) const override;
  [[nodiscard]] std::string Column(const Expression& value) const override;
  [[nodiscard]] std::string OrderTerm(const Expression& value) const override;

 private:
  [[nodiscard]] std::string Operand(const Expression& value, bool asText) const;

  ServerStorage& storage_;
  std::shared_ptr<const TableSchema> table_;
};

/// A text field or expression as it is compared and ordered.
[[nodiscard]] std::string ServerTextKey(const std::string& expression);

/// What matches the folded form of the texts that the pattern of Like matches, as the server's regular
/// expression.
[[nodiscard]] std::string LikeExpression(std::string_view pattern);

}  // namespace varnlog::dao
