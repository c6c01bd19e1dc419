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

Verification Verify(dao::Database& log, const std::optional<Anchor>& anchor, const Progress& progress) {
  Verification result;
  const Findings findings([&result](Finding finding) {
    if (result.findings.size() < Verification::kMostFindings) result.findings.push_back(std::move(finding));
    ++result.allFindings;
  });
  if (!HasSealTables(log)) {
    findings.Add({Fault::kNoSeals, 0, 0, {}});
    return result;
  }
  // Read from the first to the last with everything else, so that all of it is one state of the log.
  const auto rows = log.Scan(kExposures, SealedFields(), {});
  const bool hasRow = rows->Next();
  if (!log.HasRules(LogRules())) findings.Add({Fault::kRulesChanged, 0, 0, {}});
  SealWalk seals(log, 0, findings);
  seals.Run();
  result.seals = seals.Count();
  result.entries = seals.Entries();
  result.head = seals.NewestHead();
  result.notes = seals.Notes();
  if (result.seals == 0) findings.Add({Fault::kNoSeals, 0, 0, {}});
  if (anchor && !Holds(log, *anchor)) findings.Add({Fault::kAnchorMissing, anchor->seal, 0, {}});
  RowCheck check(log, seals.TakeRanges(), findings, progress);
  result.isCancelled = !check.Run(*rows, hasRow);
  result.exposures = check.Count();
  return result;
}

std::optional<Finding> CheckNewest(dao::Database& log) {
  constexpr std::int64_t kNewest = 50;
  std::optional<Finding> first;
  const Findings findings([&first](Finding finding) {
    if (!first) first = std::move(finding);
  });
  SealWalk(log, ReadHead(log).number - kNewest, findings).Run();
  return first;
}

}  // namespace varnlog::seals
