#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "db/dao/Field.h"
#include "db/dao/TableDef.h"

namespace varnlog::dao {

/// Counters have 32 bits: a greater number in a file is damaged, and must not use the counter up.
inline constexpr std::int64_t kMostCounter = 0x7fffffff;

/// What the engine knows of one table.
struct TableSchema {
  std::string name;  // as declared
  std::vector<FieldDef> fields;
  std::vector<Value> defaults;                 // of a new row, one a field
  std::vector<Index> indexes;                  // as Seek takes their fields
  std::vector<std::string> firstStoredFields;  // of each index
  /// Fields that an index is ordered by for finding their different combinations.
  std::vector<std::vector<std::string>> groupedFields;

  /// Letter case is ignored; nothing for an unknown name.
  [[nodiscard]] std::optional<std::size_t> FieldAt(std::string_view fieldName) const;
  /// True when an index is stored in the order of this field, so that its greatest value is found at once.
  [[nodiscard]] bool HasIndexOn(std::size_t field) const;
};

/// Lower case of the 26 letters; names of tables, fields and indexes are compared in this form.
[[nodiscard]] std::string LowerName(std::string_view name);
[[nodiscard]] bool SameName(std::string_view a, std::string_view b);

}  // namespace varnlog::dao
