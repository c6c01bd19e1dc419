#include "seals/LogSeals.h"

#include <algorithm>

#include "db/dao/TableScan.h"
#include "seals/Canonical.h"
#include "seals/Ledger.h"
#include "seals/LeftOver.h"
#include "seals/SealedFields.h"

namespace varnlog::seals {

namespace {

constexpr std::int64_t kRowsPerReport = 8192;
constexpr std::int64_t kAll = std::numeric_limits<std::int64_t>::max();

void Report(const Progress& progress, std::int64_t done, std::int64_t all) {
  if (progress && !progress(done, all))
    throw dao::EngineError(dao::ErrorNumber::kCancelled, "The operation was cancelled.");
}

LineSeal ReadRows(dao::Database& log, std::int64_t first, std::int64_t last, const Progress& progress) {
  LineSeal rows;
  const std::int64_t all = progress ? log.OpenRecordset(kExposures)->RecordCount() : 0;
  const auto scan = log.Scan(kExposures, SealedFields(), {.first = first, .last = last});
  while (scan->Next()) {
    rows.Add(scan->Values());
    if (rows.Count() % kRowsPerReport == 0) Report(progress, rows.Count(), all);
  }
  return rows;
}

// Usually nothing is missing, and then the log is only read.
void SealWhatIsMissing(dao::Database& log, const Ledger& ledger, const Progress& progress,
                       OpenReport& report) {
  if (HasSealTables(log) && log.HasRules(LogRules()) && !NeedsSeal(log, ReadSealed(log), kAll)) return;
  dao::ChangeGroup changes = log.BeginChanges();
  report.tablesMade = !HasSealTables(log);
  report.rulesRestored = !report.tablesMade && !log.HasRules(LogRules());
  if (report.tablesMade) MakeSealTables(log);
  if (report.rulesRestored) log.SetRules(LogRules());
  const bool isFirst = ReadHead(log).number == 0;
  const std::int64_t sealed = SealUnsealed(log, ledger.NewSeal(SealKind::kTakeover), kAll, progress);
  if (!isFirst) report.found = sealed;
  changes.Commit();
}

}  // namespace

bool NeedsSeal(dao::Database& log, const SealedSoFar& sealed, std::int64_t lastRow) {
  return sealed.head.number == 0 ||
         std::min(lastRow, log.Greatest(kExposures, SealedFields()[0])) >
             log.Greatest(kSeals, "tSealNLastRow") ||
         log.Greatest(kHistory, "tHistCulNrPk") > sealed.lastHistory;
}

void AddRows(Seal& seal, LineSeal& rows) {
  seal.firstRow = rows.First();
  seal.lastRow = rows.Last();
  seal.rows = rows.Count();
  seal.marks += rows.Marks();
  seal.rowDigest = rows.Digest();
}

void AddHistory(Seal& seal, dao::Database& log, std::int64_t last) {
  LineSeal lines;
  const auto scan = log.Scan(kHistory, HistoryFields(), {.first = last + 1});
  while (scan->Next()) lines.Add(scan->Values());
  seal.firstHistory = last + 1;
  seal.lastHistory = std::max(last, lines.Last());
  seal.marks += lines.Marks();
  seal.historyDigest = lines.Digest();
}

std::int64_t SealUnsealed(dao::Database& log, Seal seal, std::int64_t lastRow, const Progress& progress) {
  const SealedSoFar sealed = ReadSealed(log);
  const std::int64_t sealedRow = log.Greatest(kSeals, "tSealNLastRow");
  // Before the first seal every number counts; those of old logs may be negative.
  const std::int64_t first =
      sealed.head.number == 0 ? std::numeric_limits<std::int64_t>::min() : sealedRow + 1;
  LineSeal rows = ReadRows(log, first, lastRow, progress);
  seal.number = sealed.head.number + 1;
  AddRows(seal, rows);
  AddHistory(seal, log, sealed.lastHistory);
  const bool isNeeded = sealed.head.number == 0 || seal.rows > 0 || seal.lastHistory >= seal.firstHistory;
  if (isNeeded) WriteSeal(log, sealed.head.digest, seal);
  return seal.rows;
}

OpenReport OpenLedger(dao::Database& log, const std::shared_ptr<Ledger>& ledger, const Progress& progress) {
  OpenReport report;
  SealWhatIsMissing(log, *ledger, progress, report);
  report.finding = CheckNewest(log);
  static_cast<void>(log.ObeyRules(LogRules()));
  log.SetJournal(ledger);
  report.locked = LockLeftOver(log, ledger->Who());
  return report;
}

void SealGoingOn(dao::Database& log, const Ledger& ledger) {
  dao::ChangeGroup changes = log.BeginChanges();
  const SealedSoFar sealed = ReadSealed(log);
  Seal seal = ledger.NewSeal(SealKind::kTakeover);
  seal.number = sealed.head.number + 1;
  AddHistory(seal, log, sealed.lastHistory);
  WriteSeal(log, sealed.head.digest, seal);
  changes.Commit();
}

void SealConverted(dao::Database& log, const platform::Author& author, const platform::Clock& clock,
                   const Progress& progress) {
  const Ledger ledger(author, clock);
  if (!HasSealTables(log)) MakeSealTables(log);
  SealUnsealed(log, ledger.NewSeal(SealKind::kConversion), kAll, progress);
}

}  // namespace varnlog::seals
