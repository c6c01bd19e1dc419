#include "seals/Verifier.h"

#include <limits>

#include "db/dao/TableScan.h"
#include "seals/SealedFields.h"
#include "seals/VerifyRows.h"
#include "seals/VerifySeals.h"

namespace varnlog::seals {

bool Holds(dao::Database& log, const Anchor& anchor) {
  if (!HasSealTables(log)) return false;
  const std::vector<std::string> fields = {"tSealSDigest"};
  const auto scan = log.Scan(kSeals, fields, {.first = anchor.seal, .last = anchor.seal});
  return scan->Next() && anchor.Names(scan->Values()[0].text);
}

namespace {

/// The newest repair, if the entries and seals that it left are still those.
std::optional<RepairBase> ReadTrustedBase(dao::Database& log) {
  auto base = ReadRepairBase(log);
  if (base && !AreLeftAsSealed(log, *base)) base.reset();
  return base;
}

/// Whether an entry or a seal is meant that the repair found as it is.
bool IsBefore(const Finding& finding, const RepairBase& base) {
  switch (finding.fault) {
    case Fault::kValueChanged:
      return finding.other < base.firstHistory;
    case Fault::kEntryChanged:
    case Fault::kEntryDeleted:
    case Fault::kEntryUnsealed:
    case Fault::kEntryForbidden:
      return finding.number < base.firstHistory;
    case Fault::kSealChanged:
    case Fault::kSealDeleted:
    case Fault::kSealRows:
    case Fault::kSealEntries:
      return finding.number < base.seal;
    default:
      return false;
  }
}

void Keep(std::vector<Finding>& findings, Finding finding) {
  if (findings.size() < Verification::kMostFindings) findings.push_back(std::move(finding));
}

}  // namespace

Verification Verify(dao::Database& log, const std::optional<Anchor>& anchor, const Progress& progress) {
  Verification result;
  std::optional<RepairBase> base;
  const Findings known([&result](Finding finding) { Keep(result.known, std::move(finding)); });
  const Findings findings([&](Finding finding) {
    if (base && IsBefore(finding, *base)) return known.Add(std::move(finding));
    Keep(result.findings, std::move(finding));
    ++result.allFindings;
  });
  if (!HasSealTables(log)) {
    findings.Add({Fault::kNoSeals, 0, 0, {}});
    return result;
  }
  // Read from the first to the last with everything else, so that all of it is one state of the log.
  const auto rows = log.Scan(kExposures, SealedFields(), {});
  const bool hasRow = rows->Next();
  base = ReadTrustedBase(log);
  result.losses = ReadLosses(log);
  if (!log.HasRules(LogRules())) findings.Add({Fault::kRulesChanged, 0, 0, {}});
  SealWalk seals(log, 0, findings);
  seals.Run();
  result.seals = seals.Count();
  result.entries = seals.Entries();
  result.head = seals.NewestHead();
  result.notes = seals.Notes();
  if (result.seals == 0) findings.Add({Fault::kNoSeals, 0, 0, {}});
  if (anchor && !Holds(log, *anchor)) findings.Add({Fault::kAnchorMissing, anchor->seal, 0, {}});
  RowCheck check(log, {seals.TakeRanges(), base}, {findings, known}, progress);
  result.isCancelled = !check.Run(*rows, hasRow);
  result.exposures = check.Count();
  return result;
}

std::optional<Finding> CheckNewest(dao::Database& log) {
  constexpr std::int64_t kNewest = 50;
  constexpr std::int64_t kMostEntries = 500;  // of one seal: a first intake has thousands
  std::optional<Finding> first;
  const Findings findings([&first](Finding finding) {
    if (!first) first = std::move(finding);
  });
  const std::int64_t before = ReadHead(log).number - kNewest;
  const auto base = ReadRepairBase(log, before);
  SealWalk(log, base ? base->seal : before, findings, kMostEntries).Run();
  return first;
}

}  // namespace varnlog::seals
