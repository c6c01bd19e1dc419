#include "legacy/LogSchema.h"

namespace varnlog::legacy {
namespace {

using enum ColumnType;

constexpr LogColumn kExposureColumns[] = {
    {"tXrayCulIntIDPk", kLong},      {"tXraySName", kText, 32},
    {"tXraySFirstname", kText, 32},  {"tXrayDBirthday", kDate},
    {"tXraySSex", kText, 1},         {"tXraySPreg", kText, 1},
    {"tXrayBEdPreg", kBoolean},      {"tXrayTs", kDate},
    {"tXraySDr", kText, 12},         {"tXrayBEdDr", kBoolean},
    {"tXraySType", kText, 4},        {"tXrayBEdType", kBoolean},
    {"tXraySDiagRetry", kText, 16},  {"tXrayBEdDiagRetry", kBoolean},
    {"tXraySRegio", kText, 16},      {"tXrayBEdRegio", kBoolean},
    {"tXraySRadDur", kText, 8},      {"tXrayBEdRadDur", kBoolean},
    {"tXraySVolt", kText, 5},        {"tXrayBEdVolt", kBoolean},
    {"tXraySCur", kText, 5},         {"tXrayBEdCur", kBoolean},
    {"tXraySDose", kText, 32, true}, {"tXrayBEdDose", kBoolean, 0, true},
    {"tXraySComment", kText, 255},
};

constexpr LogColumn kConfigColumns[] = {
    {"tCfgSKey", kText, 255},
    {"tCfgSSet", kText, 255},
};

bool Fits(ColumnType found, ColumnType wanted) {
  return found == wanted || (wanted == kText && found == kMemo);
}

}  // namespace

std::span<const LogColumn> ExposureColumns() {
  return kExposureColumns;
}

std::span<const LogColumn> ConfigColumns() {
  return kConfigColumns;
}

std::vector<int> MatchColumns(const JetTable& table, std::span<const LogColumn> wanted, FaultList& faults) {
  std::vector<int> indexes;
  for (const LogColumn& column : wanted) {
    int index = table.ColumnIndex(column.name);
    const bool isMissing = index < 0 && !column.since11;
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
