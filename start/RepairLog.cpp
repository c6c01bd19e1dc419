#include "start/RepairLog.h"

#include <utility>

#include "core/EngineMessages.h"
#include "core/LogCheck.h"
#include "core/LogConfig.h"
#include "core/LogLayout.h"
#include "db/modCommon.h"
#include "seals/RepairSeal.h"

namespace varnlog::start {

namespace {

using namespace core::literals;

std::string Lines(const std::vector<std::string>& findings) {
  constexpr std::size_t kMost = 5;
  std::string lines;
  for (std::size_t i = 0; i < findings.size() && i < kMost; ++i) lines += (i == 0 ? "" : "\n") + findings[i];
  return findings.size() > kMost ? lines + "\n..." : lines;
}

/// The log itself tells when it lost rows and where they may still be found.
void Note(dao::Database& log, const LogRepair& repair, const platform::Clock& clock) {
  if (repair.missing.empty()) return;
  core::NoteMissingExposures(log, repair.missing);
  const std::string key = std::string(core::kRepairedKey) + clock.Now().ToIso();
  core::WriteLogConfig(log, key,
                       std::to_string(dao::CountOf(repair.missing)) + " exposures missing, numbers " +
                           dao::RangesText(repair.missing, 200));
}

void Complete(dao::Database& log, LogRepair& repair, const platform::Clock& clock) {
  repair.restored = core::CompleteLog(log);
  repair.missing = core::MissingExposures(log);
  Note(log, repair, clock);
}

/// Adds nothing to a log that lacks nothing.
bool CompleteOpen(db::CJetEngine& engine, LogRepair& repair, const platform::Clock& clock) {
  if (core::CheckLog(*engine.Database()).empty()) return true;
  if (!engine.TransactionStart()) return false;
  Complete(*engine.Database(), repair, clock);
  return engine.TransactionCommit();
}

void LookAgain(dao::Database& log, LogRepair& repair) {
  repair.remaining = log.Check();
  for (std::string& finding : core::CheckLog(log)) repair.remaining.push_back(std::move(finding));
  if (!db::TableExists(log, core::kExposureTable)) return;
  repair.exposures = log.OpenRecordset(std::string(core::kExposureTable))->RecordCount();
}

void CompleteAndLook(db::CJetEngine& engine, const std::string& file, LogRepair& repair,
                     const platform::Clock& clock) {
  if (engine.OpenDBInWorkspace(file, false, false) != 0) {
    repair.error = core::TrappedError(engine);
    return;
  }
  try {
    if (!repair.damage.empty() || CompleteOpen(engine, repair, clock))
      LookAgain(*engine.Database(), repair);
    else
      repair.error = core::TrappedError(engine);
  } catch (const dao::EngineError& error) {
    repair.error = error;
  }
  engine.CloseDBInWorkspace();
}

}  // namespace

std::string RepairText(const core::TextLookup& texts, const LogRepair& repair) {
  const auto text = [&](core::TextKey key, const core::Placeholders& values) {
    return core::FilledText(texts, key, values);
  };
  if (!repair.IsDone())
    return text("PP_ERR_REPAIR"_key, {{"strError", core::EngineErrorText(texts, *repair.error)}});
  constexpr std::size_t kMostIds = 120;
  const std::string count = std::to_string(repair.exposures);
  const bool wasMended = !repair.damage.empty() || !repair.restored.empty();
  std::string all;
  if (!repair.missing.empty())
    all = text("PP_REPAIR_LOST"_key, {{"lngCount", count},
                                      {"lngMissing", std::to_string(dao::CountOf(repair.missing))},
                                      {"strIds", dao::RangesText(repair.missing, kMostIds)}});
  else if (repair.remaining.empty())
    all = text(wasMended ? "PP_REPAIR_MENDED"_key : "PP_REPAIR_DONE"_key, {{"lngCount", count}});
  const auto add = [&](const std::string& paragraph) { all += (all.empty() ? "" : "\n\n") + paragraph; };
  if (!repair.remaining.empty())
    add(text("PP_REPAIR_REMAINING"_key, {{"strError", Lines(repair.remaining)}}));
  if (!repair.damagedFile.empty()) add(text("PP_REPAIR_KEPT"_key, {{"strFile", repair.damagedFile}}));
  return all;
}

LogRepair RepairLog(db::CJetEngine& engine, const std::string& file, const platform::Author& author,
                    const platform::Clock& clock) {
  LogRepair repair;
  if (engine.WorkspaceName().empty()) engine.OpenWorkspace("RepairWs", "Admin", "");
  engine.SetFinishRepair([&](dao::Database& mended, const dao::RepairReport&) {
    // In the same step in which the mended content takes its place, so that no crash loses the note.
    Complete(mended, repair, clock);
    seals::SealRepaired(mended, repair.missing, author, clock);
  });
  engine.RepairDatabase(file);
  engine.SetFinishRepair({});
  if (engine.LastNumber() != 0) {
    LogRepair failed;
    failed.error = core::TrappedError(engine);
    return failed;
  }
  repair.damage = engine.Repaired().findings;
  repair.damagedFile = engine.Repaired().damagedFile;
  CompleteAndLook(engine, file, repair, clock);
  return repair;
}

}  // namespace varnlog::start
