#include "start/SealedLog.h"

#include <algorithm>
#include <memory>

#include "core/EngineMessages.h"
#include "seals/Ledger.h"
#include "seals/LogSeals.h"
#include "start/VerifyText.h"

namespace varnlog::start {

using namespace core::literals;

namespace {

void Tell(const Services& services, const seals::OpenReport& report) {
  const core::Messages messages = services.Messages();
  if (report.rulesRestored) messages.Critical("SL_RULES"_key);
  if (report.found > 0) messages.Inform("SL_FOUND"_key, {{"lngCount", std::to_string(report.found)}});
  if (report.finding)
    messages.Critical("SL_BROKEN"_key, {{"strFinding", Describe(*report.finding, services.texts)}});
}

}  // namespace

void PrepareSeals(core::Globals& globals, const Services& services) {
  globals.LedgerGl.reset();
  if (globals.ReadOnlyGl) return;
  try {
    globals.LedgerGl = std::make_shared<seals::Ledger>(globals.AuthorGl, services.clock);
    Tell(services, seals::OpenLedger(*globals.LogEngineGl->Database(), globals.LedgerGl, services.progress));
  } catch (const dao::EngineError& error) {
    globals.LedgerGl.reset();
    globals.ReadOnlyGl = true;
    services.Messages().Critical("SL_ERR_OPEN"_key,
                                 {{"strError", core::EngineErrorText(services.texts, error)}});
  }
}

namespace {

std::string HeadKey(const core::Globals& globals) {
  std::string key = "SealHead." + globals.AuthorGl.workstation;
  std::replace(key.begin(), key.end(), '=', '-');
  return key;
}

void WarnOfLostHead(const core::Globals& globals, const Services& services, const seals::Anchor& anchor) {
  services.Messages().Critical(
      "SL_ANCHOR"_key, {{"strFile", globals.strDataFileGl}, {"lngNumber", std::to_string(anchor.seal)}});
  if (globals.LedgerGl) seals::SealGoingOn(*globals.LogEngineGl->Database(), *globals.LedgerGl);
}

}  // namespace

void CheckLastHead(const core::Globals& globals, const Services& services) {
  dao::Database& log = *globals.LogEngineGl->Database();
  const auto seen =
      seals::ReadAnchor(services.ini.ReadString(globals.strDataFileGl, HeadKey(globals), globals.IniFileGl));
  try {
    if (seen && !seals::Holds(log, *seen)) WarnOfLostHead(globals, services, *seen);
  } catch (const dao::EngineError& error) {
    services.Messages().ShowText(core::EngineErrorText(services.texts, error));
  }
  RememberHead(globals, services.ini);
}

void RememberHead(const core::Globals& globals, core::SettingsStore& ini) {
  try {
    dao::Database& log = *globals.LogEngineGl->Database();
    if (!seals::HasSealTables(log)) return;
    const seals::Head head = seals::ReadHead(log);
    ini.WriteString(globals.strDataFileGl, HeadKey(globals), std::to_string(head.number) + "-" + head.digest,
                    globals.IniFileGl);
  } catch (const dao::EngineError&) {
    // A head that is not remembered is not missed; the one before is still there.
    return;
  }
}

}  // namespace varnlog::start
