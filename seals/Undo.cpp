#include "seals/Undo.h"

#include <algorithm>

#include "db/dao/DBEngine.h"
#include "seals/Canonical.h"
#include "seals/SealTables.h"

namespace varnlog::seals {

namespace {

constexpr std::size_t kExposureAt = 1;  // among HistoryFields()

dao::CellKind KindOf(const dao::CellView& value) {
  return value.kind == dao::CellKind::kInteger ? dao::CellKind::kText : value.kind;
}

bool IsPrivileged(const Change& change) {
  return change.kind == NameOf(ChangeKind::kSuite) || change.kind == NameOf(ChangeKind::kRepair);
}

// `values` are those after the change.
bool WasAllowed(const std::vector<dao::CellView>& values, const Change& change, std::size_t field) {
  switch (RuleOf(field)) {
    case FieldRule::kNever:
      return false;
    case FieldRule::kComment:
      return true;
    case FieldRule::kSuite:
      return IsPrivileged(change);
    case FieldRule::kFlag:
      return IsPrivileged(change) || TextOf(change.After()) == "0";
    case FieldRule::kValue:
      return IsPrivileged(change) || TextOf(values[FlagOf(field)]) == "1";
  }
  return false;
}

}  // namespace

Change::Change(const std::vector<dao::CellView>& row)
    : number(NumberOf(row[0])),
      exposure(NumberOf(row[kExposureAt])),
      field(TextOf(row[2])),
      kind(TextOf(row[5])),
      beforeKind_(KindOf(row[3])),
      afterKind_(KindOf(row[4])),
      before_(TextOf(row[3])),
      after_(TextOf(row[4])) {}

ChangeWalk::ChangeWalk(dao::Database& log, std::int64_t firstExposure)
    : scan_(log.Scan(kHistory, HistoryFields(), {.order = "tXrayCulIntIDPk", .first = firstExposure})) {
  Advance();
}

void ChangeWalk::Advance() {
  hasRow_ = scan_->Next();
}

const std::vector<Change>& ChangeWalk::Of(std::int64_t exposure,
                                          const std::function<void(std::int64_t)>& homeless) {
  changes_.clear();
  while (hasRow_ && NumberOf(scan_->Values()[kExposureAt]) <= exposure) {
    if (NumberOf(scan_->Values()[kExposureAt]) < exposure) {
      homeless(NumberOf(scan_->Values()[kExposureAt]));
    } else {
      changes_.emplace_back(scan_->Values());
    }
    Advance();
  }
  return changes_;
}

void ChangeWalk::Finish(const std::function<void(std::int64_t)>& homeless) {
  for (; hasRow_; Advance()) homeless(NumberOf(scan_->Values()[kExposureAt]));
}

std::span<const Change> Behind(std::span<const Change> changes, std::int64_t entry) {
  const auto first = std::find_if(changes.begin(), changes.end(),
                                  [entry](const Change& change) { return change.number > entry; });
  return changes.subspan(static_cast<std::size_t>(first - changes.begin()));
}

void Undo(std::vector<dao::CellView>& values, std::span<const Change> changes, const Findings& findings) {
  for (auto change = changes.rbegin(); change != changes.rend(); ++change) {
    const auto field = SealedFieldAt(change->field);
    if (!field || !WasAllowed(values, *change, *field)) {
      findings.Add({Fault::kEntryForbidden, change->number, change->exposure, change->field});
      if (!field) continue;
    }
    if (!SameValue(values[*field], change->After()))
      findings.Add({Fault::kValueChanged, change->exposure, change->number, change->field});
    values[*field] = change->Before();
  }
}

}  // namespace varnlog::seals
