#include "core/LogLayout.h"

#include "db/modCommon.h"

namespace varnlog::core {

namespace {

using enum dao::FieldType;

constexpr LogField kExposureFields[] = {
    {"tXrayCulIntIDPk", kLong},       {"tXraySName", kText, 32},
    {"tXraySFirstname", kText, 32},   {"tXrayDBirthday", kDate},
    {"tXraySSex", kText, 1},          {"tXraySPreg", kText, 1},
    {"tXrayBEdPreg", kBoolean},       {"tXrayTs", kDate},
    {"tXraySDr", kText, 12},          {"tXrayBEdDr", kBoolean},
    {"tXraySType", kText, 4},         {"tXrayBEdType", kBoolean},
    {"tXraySDiagRetry", kText, 16},   {"tXrayBEdDiagRetry", kBoolean},
    {"tXraySRegio", kText, 16},       {"tXrayBEdRegio", kBoolean},
    {"tXraySRadDur", kText, 8},       {"tXrayBEdRadDur", kBoolean},
    {"tXraySVolt", kText, 5},         {"tXrayBEdVolt", kBoolean},
    {"tXraySCur", kText, 5},          {"tXrayBEdCur", kBoolean},
    {"tXraySDose", kText, 32, "1.1"}, {"tXrayBEdDose", kBoolean, 0, "1.1"},
    {"tXraySComment", kText, 255},
};

constexpr LogField kConfigFields[] = {
    {"tCfgSKey", kText, 32},
    {"tCfgSSet", kText, 255},
};

constexpr LogIndex kExposureIndexes[] = {
    {"iXRayIdent", 4,
     "CREATE INDEX iXRayIdent ON TXray (\n  tXrayTs, tXraySName, tXraySFirstname, tXrayDBirthday\n"
     "  /* seek: tXraySName, tXraySFirstname, tXrayDBirthday, tXrayTs */\n)"},
    {"iXRayTs", 1, "CREATE INDEX iXRayTs ON TXray (tXrayTs)"},
};

}  // namespace

dao::FieldDef LogField::Definition() const {
  return {.name = std::string(name), .type = type, .size = size};
}

std::span<const LogField> ExposureFields() {
  return kExposureFields;
}

std::span<const LogField> ConfigFields() {
  return kConfigFields;
}

std::span<const LogIndex> ExposureIndexes() {
  return kExposureIndexes;
}

std::string_view ConfigDeclaration() {
  return "CREATE TABLE TConfig (\n  tCfgSKey TEXT(32) COLLATE JET,\n  tCfgSSet TEXT(255) COLLATE JET\n)";
}

bool IsLog(const dao::Database& database) {
  return db::TableExists(database, kConfigTable) && db::TableExists(database, kExposureTable);
}

}  // namespace varnlog::core
