#include "legacy/LogSchema.h"

namespace varnlog::legacy {
namespace {

// The types of both engines have the same numbers.
bool Fits(ColumnType found, dao::FieldType wanted) {
  return static_cast<int>(found) == static_cast<int>(wanted) ||
         (wanted == dao::FieldType::kText && found == ColumnType::kMemo);
}

}  // namespace

std::vector<int> MatchColumns(const JetTable& table, std::span<const core::LogField> wanted,
                              FaultList& faults) {
  std::vector<int> indexes;
  for (const core::LogField& column : wanted) {
    int index = table.ColumnIndex(column.name);
    const bool isMissing = index < 0 && column.since == core::kFirstVersion;
    const bool isOther =
        index >= 0 && !Fits(table.columns[static_cast<std::size_t>(index)].type, column.type);
    if (isMissing || isOther) {
      faults.Add({FaultKind::kColumnMissing, table.definitionPage, -1, std::string(column.name)});
      index = -1;
    }
    indexes.push_back(index);
  }
  return indexes;
}

}  // namespace varnlog::legacy
