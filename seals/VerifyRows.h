#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "db/dao/DBEngine.h"
#include "db/dao/TableScan.h"
#include "seals/Finding.h"
#include "seals/LineSeal.h"
#include "seals/RepairSeal.h"
#include "seals/Undo.h"
#include "seals/VerifySeals.h"

namespace varnlog::seals {

/// What the exposures are compared with.
struct SealedRows {
  std::vector<RowRange> ranges;
  std::optional<RepairBase> base;
};

/// Where faults go.
struct RowFindings {
  const Findings& found;
  const Findings& known;  // what a repair found already
};

/// Sees whether the exposures, taken back to what they were when they were added, are those of the seals.
class RowCheck {
 public:
  RowCheck(dao::Database& log, SealedRows sealed, const RowFindings& findings, const Progress& progress);

  /// `rows` are all exposures in the order of their numbers, SealedFields() of each; `hasRow` tells whether
  /// it stands on one. False when it was cancelled.
  [[nodiscard]] bool Run(dao::TableScan& rows, bool hasRow);
  [[nodiscard]] std::int64_t Count() const { return count_; }

 private:
  void Take(const std::vector<dao::CellView>& row);
  void CloseRange();
  void CloseBase();
  [[nodiscard]] bool IsLeft(std::int64_t exposure) const;
  void Homeless(std::int64_t exposure);

  dao::Database& log_;
  std::vector<RowRange> ranges_;
  std::optional<RepairBase> base_;
  const Findings& findings_;
  const Findings& known_;
  const Progress& progress_;
  ChangeWalk changes_;
  std::vector<dao::CellView> values_;
  std::size_t range_ = 0;
  LineSeal lines_;
  LineSeal left_;  // by the repair, as they were then
  std::int64_t count_ = 0;
  std::int64_t all_ = 0;
};

/// Says which of a range's exposures do not fit, by their marks.
void LocateExposures(dao::Database& log, const RowRange& range, const Findings& findings);

}  // namespace varnlog::seals
