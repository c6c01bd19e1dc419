#include "seals/VerifyRows.h"

#include <algorithm>
#include <limits>

#include "seals/Canonical.h"

namespace varnlog::seals {

namespace {

constexpr std::int64_t kRowsPerReport = 4096;

}  // namespace

RowCheck::RowCheck(dao::Database& log, std::vector<RowRange> ranges, const Findings& findings,
                   const Progress& progress)
    : log_(log),
      ranges_(std::move(ranges)),
      findings_(findings),
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
  changes_.Finish([this](std::int64_t exposure) { Homeless(exposure); });
  return true;
}

void RowCheck::Take(const std::vector<dao::CellView>& row) {
  const std::int64_t id = NumberOf(row[0]);
  while (range_ < ranges_.size() && ranges_[range_].last < id) CloseRange();
  const auto& changes = changes_.Of(id, [this](std::int64_t exposure) { Homeless(exposure); });
  const bool isSealed = range_ < ranges_.size() && ranges_[range_].first <= id;
  if (!isSealed) findings_.Add({Fault::kExposureUnsealed, id, 0, {}});
  if (changes.empty()) {
    if (isSealed) lines_.Add(row);
    return;
  }
  values_ = row;
  Undo(values_, changes, findings_);
  if (isSealed) lines_.Add(values_);
}

void RowCheck::CloseRange() {
  const RowRange& range = ranges_[range_];
  if (lines_.Count() != range.rows || lines_.Digest() != range.digest)
    LocateExposures(log_, range, findings_);
  lines_ = LineSeal();
  ++range_;
}

// One that a seal knows is missed there.
void RowCheck::Homeless(std::int64_t exposure) {
  const bool isKnown = std::any_of(ranges_.begin(), ranges_.end(), [exposure](const RowRange& range) {
    return range.first <= exposure && exposure <= range.last;
  });
  if (!isKnown) findings_.Add({Fault::kExposureDeleted, exposure, 0, {}});
}

}  // namespace varnlog::seals
