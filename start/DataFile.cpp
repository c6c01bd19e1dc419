#include "db/modCommon.h"
#include "start/StartUp.h"

namespace varnlog::start {

using namespace core::literals;

namespace {

constexpr std::string_view kOldVersion = "1.0";
constexpr std::string_view kVersion = "1.1";
constexpr const char* kDoseField = "tXraySDose";
constexpr const char* kDoseFlag = "tXrayBEdDose";
constexpr std::int32_t kDoseLength = 32;

bool HasDoseFields(dao::Database& log) {
  try {
    const dao::TableDef exposures = log.TableDefs("TXray");
    static_cast<void>(exposures.FieldNamed(kDoseField));
    static_cast<void>(exposures.FieldNamed(kDoseFlag));
    return true;
  } catch (const dao::EngineError&) {
    return false;
  }
}

std::unique_ptr<dao::Recordset> ConfigRow(const core::Globals& globals, std::string_view key) {
  std::string sql = "SELECT TConfig.tCfgSKey, TConfig.tCfgSSet From TConfig WHERE (((TConfig.tCfgSKey)='";
  sql.append(key).append("'));");
  return globals.LogEngineGl->Database()->OpenRecordset(sql, dao::RecordsetType::kDynaset);
}

bool HasOpenLog(const core::Globals& globals) {
  return globals.LogEngineGl && globals.LogEngineGl->Database();
}

/// Tells why the engine did not open the file.
void ShowOpenError(const Services& services, const db::CJetEngine& engine, const std::string& file,
                   std::int32_t number) {
  switch (static_cast<dao::ErrorNumber>(number)) {
    case dao::ErrorNumber::kFileInUse:
      services.Messages().Inform("MN_ERR_DBOPENEX"_key, {{"strFile", file}});
      break;
    case dao::ErrorNumber::kNoPermission:
    case dao::ErrorNumber::kUnrecognisedFormat:
      services.Messages().ShowText(engine.LastError());
      break;
    default:
      services.Messages().Critical("MN_ERR_DBOPEN"_key, {{"strFile", file}});
  }
}

/// The checks of an opened file, the message of the first that fails shown.
bool CheckOpened(core::Globals& globals, const Services& services, const std::string& file) {
  if (!UpgradeDataFile(globals, file)) {
    services.Messages().Critical("MN_ERR_DBNOTVALID"_key, {{"strFile", file}});
    return false;
  }
  if (!ReadDBVersion(globals)) {
    services.Messages().Critical("MN_ERR_CONFIG"_key);
    return false;
  }
  if (globals.DBVersionGl != kVersion) {
    services.Messages().Critical("MN_ERR_VERSION"_key);
    return false;
  }
  return true;
}

}  // namespace

std::string GetConfigValue(const core::Globals& globals, std::string_view key) {
  if (!HasOpenLog(globals)) return {};
  try {
    const auto row = ConfigRow(globals, key);
    return row->IsEOF() ? std::string() : std::string(row->Fields("tCfgSSet").Text());
  } catch (const dao::EngineError&) {
    return {};
  }
}

bool SetConfigValue(const core::Globals& globals, std::string_view key, std::string_view value) {
  if (!HasOpenLog(globals)) return false;
  try {
    const auto row = ConfigRow(globals, key);
    if (row->IsEOF()) return false;
    row->Edit();
    row->Fields("tCfgSSet").SetText(value);
    row->Update();
    return true;
  } catch (const dao::EngineError&) {
    return false;
  }
}

bool ReadDBVersion(core::Globals& globals) {
  globals.DBVersionGl = GetConfigValue(globals, "DBVersion");
  globals.ReadOnlyGl = GetConfigValue(globals, "ReadOnly") == "1" ||
                       (HasOpenLog(globals) && globals.LogEngineGl->Database()->IsReadOnly());
  return !globals.DBVersionGl.empty();
}

bool UpgradeDataFile(core::Globals& globals, const std::string& file) {
  db::CJetEngine& engine = *globals.LogEngineGl;
  const auto exists = [&engine](std::string_view table) {
    return db::TableExists(*engine.Database(), table);
  };
  if (!exists("TConfig") || !exists("TXray")) return false;
  if (GetConfigValue(globals, "DBVersion") != kOldVersion || engine.Database()->IsReadOnly()) return true;
  // An upgrade that was interrupted has added one or both of them already.
  engine.AddTextFieldToTable("TXRay", kDoseField, kDoseLength);
  if (engine.AddBooleanFieldToTable("TXRay", kDoseFlag)) {
    // Opened anew, so that the new fields are seen.
    engine.CloseDBInWorkspace();
    if (engine.OpenDBInWorkspace(file, false, false) != 0) return false;
  }
  // Without the fields the log must not pass for the new version: it would open and then fail at every row.
  if (HasDoseFields(*engine.Database())) SetConfigValue(globals, "DBVersion", kVersion);
  return true;
}

bool OpenAndCheckDataFile(core::Globals& globals, const Services& services, const std::string& file,
                          bool readOnly) {
  db::CJetEngine& engine = *globals.LogEngineGl;
  const std::int32_t error = engine.OpenDBInWorkspace(file, false, readOnly);
  if (error != 0) {
    ShowOpenError(services, engine, file, error);
    return false;
  }
  if (!CheckOpened(globals, services, file)) {
    if (engine.Database()) engine.CloseDBInWorkspace();
    return false;
  }
  globals.strDataFileGl = file;
  return true;
}

}  // namespace varnlog::start
