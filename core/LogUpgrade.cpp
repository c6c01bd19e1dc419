#include "core/LogUpgrade.h"

#include <algorithm>

#include "core/LogConfig.h"
#include "core/LogLayout.h"

namespace varnlog::core {

namespace {

bool IsFirstVersion(dao::Database& log) {
  return ReadLogConfig(log, kVersionKey) == kFirstVersion;
}

bool Has(dao::Database& log, const LogField& field) {
  try {
    static_cast<void>(log.TableDefs(kExposureTable).FieldNamed(field.name));
    return true;
  } catch (const dao::EngineError& error) {
    if (error.number() != dao::ErrorNumber::kItemNotFound) throw;
    return false;
  }
}

bool HasAllFields(dao::Database& log) {
  const auto fields = ExposureFields();
  return std::all_of(fields.begin(), fields.end(), [&log](const LogField& field) { return Has(log, field); });
}

bool Add(db::CJetEngine& engine, const LogField& field) {
  const std::string table(kExposureTable);
  const std::string name(field.name);
  return field.type == dao::FieldType::kBoolean ? engine.AddBooleanFieldToTable(table, name)
                                                : engine.AddTextFieldToTable(table, name, field.size);
}

/// False when the log did not open again.
bool AddFields(db::CJetEngine& engine, const std::string& file) {
  bool added = false;
  for (const LogField& field : ExposureFields()) {
    // An upgrade that was interrupted has added one or both of them already.
    if (field.since != kFirstVersion) added = Add(engine, field);
  }
  if (!added) return true;
  // Opened anew, so that the new fields are seen.
  engine.CloseDBInWorkspace();
  return engine.OpenDBInWorkspace(file, false, false) == 0;
}

}  // namespace

bool UpgradeDataFile(db::CJetEngine& engine, const std::string& file) {
  try {
    if (!IsLog(*engine.Database())) return false;
    if (!IsFirstVersion(*engine.Database()) || engine.Database()->IsReadOnly()) return true;
    if (!AddFields(engine, file)) return false;
    // Without the fields the log must not pass for the new version: it would open and then fail at every row.
    if (HasAllFields(*engine.Database())) ChangeLogConfig(*engine.Database(), kVersionKey, kLogVersion);
  } catch (const dao::EngineError&) {
    // What cannot be read has no version, which the caller finds out and tells.
  }
  return true;
}

}  // namespace varnlog::core
