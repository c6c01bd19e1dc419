#include "core/EngineMessages.h"
#include "core/LogConfig.h"
#include "core/LogLayout.h"
#include "core/LogUpgrade.h"
#include "start/SealedLog.h"
#include "start/StartUp.h"

namespace varnlog::start {

using namespace core::literals;

namespace {

bool HasOpenLog(const core::Globals& globals) {
  return globals.LogEngineGl && globals.LogEngineGl->Database();
}

/// Tells why the engine did not open the file.
void ShowOpenError(const Services& services, const db::CJetEngine& engine, const std::string& file,
                   std::int32_t number) {
  switch (static_cast<dao::ErrorNumber>(number)) {
    case dao::ErrorNumber::kServerUnreachable:
    case dao::ErrorNumber::kServerDatabaseMissing:
    case dao::ErrorNumber::kServerNotTrusted:
    case dao::ErrorNumber::kServerLibraryMissing:
    case dao::ErrorNumber::kCancelled:
      services.Messages().ShowText(core::EngineErrorText(services.texts, engine));  // holds the reason
      break;
    case dao::ErrorNumber::kFileInUse:
      services.Messages().Inform("MN_ERR_DBOPENEX"_key, {{"strFile", file}});
      break;
    case dao::ErrorNumber::kNoPermission:
    case dao::ErrorNumber::kUnrecognisedFormat:
    case dao::ErrorNumber::kConnectionLost:
    case dao::ErrorNumber::kBadAccount:
      services.Messages().ShowText(core::WithDetail(
          services.texts, core::EngineErrorText(services.texts, engine), engine.LastError()));
      break;
    default:
      services.Messages().Critical("MN_ERR_DBOPEN"_key, {{"strFile", file}});
  }
}

/// The checks of an opened file, the message of the first that fails shown.
Opened CheckOpened(core::Globals& globals, const Services& services, const std::string& file) {
  if (!core::UpgradeDataFile(*globals.LogEngineGl, file)) {
    services.Messages().Critical("MN_ERR_DBNOTVALID"_key, {{"strFile", file}});
    return Opened::kNo;
  }
  if (!ReadDBVersion(globals)) {
    services.Messages().Critical("MN_ERR_CONFIG"_key);
    return Opened::kDamaged;
  }
  if (globals.DBVersionGl != core::kLogVersion) {
    services.Messages().Critical("MN_ERR_VERSION"_key);
    return Opened::kNo;
  }
  return Opened::kYes;
}

}  // namespace

std::string GetConfigValue(const core::Globals& globals, std::string_view key) {
  if (!HasOpenLog(globals)) return {};
  try {
    return core::ReadLogConfig(*globals.LogEngineGl->Database(), key).value_or("");
  } catch (const dao::EngineError&) {
    return {};
  }
}

bool SetConfigValue(const core::Globals& globals, std::string_view key, std::string_view value) {
  if (!HasOpenLog(globals)) return false;
  try {
    return core::ChangeLogConfig(*globals.LogEngineGl->Database(), key, value);
  } catch (const dao::EngineError&) {
    return false;
  }
}

bool ReadDBVersion(core::Globals& globals) {
  globals.DBVersionGl = GetConfigValue(globals, core::kVersionKey);
  globals.ReadOnlyGl = GetConfigValue(globals, core::kReadOnlyKey) == "1" ||
                       (HasOpenLog(globals) && globals.LogEngineGl->Database()->IsReadOnly());
  return !globals.DBVersionGl.empty();
}

Opened OpenAndCheckDataFile(core::Globals& globals, const Services& services, const std::string& file,
                            bool readOnly) {
  db::CJetEngine& engine = *globals.LogEngineGl;
  const std::int32_t error = engine.OpenDBInWorkspace(file, false, readOnly);
  if (error != 0) {
    ShowOpenError(services, engine, file, error);
    return static_cast<dao::ErrorNumber>(engine.LastNumber()) == dao::ErrorNumber::kDamaged ? Opened::kDamaged
                                                                                            : Opened::kNo;
  }
  const Opened checked = CheckOpened(globals, services, file);
  if (checked != Opened::kYes) {
    if (engine.Database()) engine.CloseDBInWorkspace();
    return checked;
  }
  PrepareSeals(globals, services);
  globals.strDataFileGl = file;
  return Opened::kYes;
}

}  // namespace varnlog::start
