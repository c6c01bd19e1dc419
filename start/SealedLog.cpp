#include "start/SealedLog.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "core/EngineMessages.h"
#include "seals/Ledger.h"
#include "seals/LogSeals.h"
#include "start/VerifyText.h"

namespace varnlog::start {

using namespace core::literals;

namespace {

/// One message, whatever was found.
void Tell(const Services& services, const seals::OpenReport& report) {
  std::vector<std::string> parts;
  if (report.rulesRestored) parts.push_back(services.texts.GetText("SL_RULES"_key));
  if (report.finding)
    parts.push_back(core::FilledText(services.texts, "SL_BROKEN"_key,
                                     {{"strFinding", Describe(*report.finding, services.texts)}}));
  const bool isBroken = !parts.empty();
  if (report.found > 0)
    parts.push_back(
        core::FilledText(services.texts, "SL_FOUND"_key, {{"lngCount", std::to_string(report.found)}}));
  if (parts.empty()) return;
  std::string all = parts.front();
  for (std::size_t i = 1; i < parts.size(); ++i) all += "\r\r" + parts[i];
  services.Messages().ShowText(all,
                               isBroken ? core::MessageIcon::kCritical : core::MessageIcon::kInformation);
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
  services.Messages().Show(
      {.key = "SL_ANCHOR"_key,
       .values = {{"strFile", globals.strDataFileGl}, {"lngNumber", std::to_string(anchor.seal)}},
       .icon = core::MessageIcon::kWarning});
  if (globals.LedgerGl) seals::SealGoingOn(*globals.LogEngineGl->Database(), *globals.LedgerGl);
}

}  // namespace

bool CheckLastHead(const core::Globals& globals, const Services& services) {
  dao::Database& log = *globals.LogEngineGl->Database();
  const auto seen =
      seals::ReadAnchor(services.ini.ReadString(globals.strDataFileGl, HeadKey(globals), globals.IniFileGl));
  try {
    if (!seen || seals::Holds(log, *seen)) return true;
    WarnOfLostHead(globals, services, *seen);
  } catch (const dao::EngineError& error) {
    services.Messages().ShowText(core::EngineErrorText(services.texts, error));
  }
  return false;
}

void RememberHead(const core::Globals& globals, core::SettingsStore& ini) {
  try {
    dao::Database& log = *globals.LogEngineGl->Database();
    // One that holds nothing may still be taken over from another one.
    if (!seals::HasSealTables(log) || seals::IsUnused(log)) return;
    const seals::Head head = seals::ReadHead(log);
    BeginSettings(globals, ini);
    ini.WriteString(globals.strDataFileGl, HeadKey(globals), std::to_string(head.number) + "-" + head.digest,
                    globals.IniFileGl);
  } catch (const dao::EngineError&) {
    // A head that is not remembered is not missed; the one before is still there.
    return;
  }
}

}  // namespace varnlog::start
