#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "db/dao/sql/JetSql.h"
#include "db/dao/storage/TableSchema.h"

namespace varnlog::dao {

/// A translated statement together with the table that it is about.
struct ResolvedSelect {
  /// Throws kTooFewParameters when the statement names what is no field of the table.
  ResolvedSelect(SelectStatement statement, std::shared_ptr<const TableSchema> itsTable);

  SelectStatement parsed;
  std::shared_ptr<const TableSchema> table;
  std::shared_ptr<const std::vector<FieldDef>> fields;  // of the record set
  std::vector<std::string> columns;                     // in the storage's SQL, one a field
  std::vector<std::size_t> ordinals;                    // the fields' places in the table
  bool allAreFields = false;                            // each column is a field, so that rows can be edited

  [[nodiscard]] std::string ColumnList() const;
  /// " WHERE (...)", with a further condition when it is not empty.
  [[nodiscard]] std::string WhereClause(std::string_view further = {}) const;

 private:
  void ResolveAllFields();
  void ResolveColumns();
};

}  // namespace varnlog::dao
