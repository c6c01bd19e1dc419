#pragma once

#include "db/dao/sql/Dialect.h"
#include "db/dao/sql/JetSql.h"

namespace varnlog::dao {

/// Computed texts carry the collation; fields rely on being declared with it.
class FileDialect final : public Dialect {
 public:
  [[nodiscard]] std::string Text(const std::string& text) const override;
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
  [[nodiscard]] std::string OrderTerm(const Expression& value) const override { return Column(value); }
};

/// A statement in the file's SQL.
[[nodiscard]] SelectStatement ParseSelect(std::string_view jetSql);

}  // namespace varnlog::dao
