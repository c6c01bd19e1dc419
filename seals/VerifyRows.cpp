#include "seals/VerifyRows.h"

#include <algorithm>
#include <limits>

#include "seals/Canonical.h"

namespace varnlog::seals {

namespace {

constexpr std::int64_t kRowsPerReport = 4096;

}  // namespace

RowCheck::RowCheck(dao::Database& log, SealedRows sealed, const RowFindings& findings,
                   const Progress& progress)
    : log_(log),
      ranges_(std::move(sealed.ranges)),
      base_(std::move(sealed.base)),
      findings_(findings.found),
      known_(findings.known),
      progress_(progress),
      changes_(log, std::numeric_limits<std::int64_t>::min()) {
  // Exposures that were found later without a seal may stand before others.
  std::stable_sort(ranges_.begin(), ranges_.end(),
                   [](const RowRange& a, const RowRange& b) { return a.first < b.first; });
  for (const RowRange& range : ranges_) all_ += range.rows;
}

bool RowCheck::Run(dao::TableScan& rows, bool hasRow) {
  for (; hasRow; hasRow = rows.Next()) {
    Take(rows.Values());
    if (++count_ % kRowsPerReport == 0 && progress_ && !progress_(count_, all_)) return false;
  }
  while (range_ < ranges_.size()) CloseRange();
  CloseBase();
  changes_.Finish([this](std::int64_t exposure) { Homeless(exposure); });
  return true;
}

bool RowCheck::IsLeft(std::int64_t exposure) const {
  return base_ && base_->firstRow <= exposure && exposure <= base_->lastRow;
}

void RowCheck::Take(const std::vector<dao::CellView>& row) {
  const std::int64_t id = NumberOf(row[0]);
  while (range_ < ranges_.size() && ranges_[range_].last < id) CloseRange();
  const auto& changes = changes_.Of(id, [this](std::int64_t exposure) { Homeless(exposure); });
  const bool isSealed = range_ < ranges_.size() && ranges_[range_].first <= id;
  const bool isLeft = IsLeft(id);
  const Findings& before = isLeft ? known_ : findings_;
  if (!isSealed) before.Add({Fault::kExposureUnsealed, id, 0, {}});
  if (changes.empty()) {
    if (isSealed) lines_.Add(row);
    if (isLeft) left_.Add(row);
    return;
  }
  values_ = row;
  const std::span<const Change> all(changes);
  const auto later = base_ ? Behind(all, base_->firstHistory - 1) : all;
  Undo(values_, later, findings_);
  if (isLeft) left_.Add(values_);
  Undo(values_, all.first(all.size() - later.size()), before);
  if (isSealed) lines_.Add(values_);
}

void RowCheck::CloseRange() {
  const RowRange& range = ranges_[range_];
  if (lines_.Count() != range.rows || lines_.Digest() != range.digest)
    LocateExposures(log_, range, base_ && range.seal < base_->seal ? known_ : findings_);
  lines_ = LineSeal();
  ++range_;
}

void RowCheck::CloseBase() {
  if (!base_ || (left_.Count() == base_->rows && left_.Digest() == base_->rowDigest)) return;
  LocateExposures(
      log_,
      {base_->seal, base_->firstRow, base_->lastRow, base_->rows, base_->rowDigest, base_->firstHistory - 1},
      findings_);
}

// One that a seal knows is missed there.
void RowCheck::Homeless(std::int64_t exposure) {
  const bool isKnown = std::any_of(ranges_.begin(), ranges_.end(), [exposure](const RowRange& range) {
    return range.first <= exposure && exposure <= range.last;
  });
  const bool wasLost = base_ && exposure <= base_->lastRow;
  if (!isKnown) (wasLost ? known_ : findings_).Add({Fault::kExposureDeleted, exposure, 0, {}});
}

}  // namespace varnlog::seals
