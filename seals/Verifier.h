#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "db/dao/DBEngine.h"
#include "seals/Anchor.h"
#include "seals/Finding.h"
#include "seals/RepairSeal.h"
#include "seals/SealTables.h"

namespace varnlog::seals {

/// What is no fault but worth knowing.
struct Note {
  enum class What {
    kClockSetBack,   // the seal's time lies before that of the seal before it
    kFoundUnsealed,  // the seal took over exposures or entries that had none
    kWentOn,         // a workstation missed a state that it had seen, and its user went on
    kRepaired,       // the log was put together from what could be read of a damaged file
  };
  What what = What::kClockSetBack;
  std::int64_t seal = 0;
  friend bool operator==(const Note&, const Note&) = default;
};

struct Verification {
  std::int64_t exposures = 0;
  std::int64_t entries = 0;  // rows of the history
  std::int64_t seals = 0;
  Head head;
  std::vector<Finding> findings;  // the first kMostFindings
  std::int64_t allFindings = 0;
  std::vector<Note> notes;
  std::vector<Loss> losses;    // what repairs could not save
  std::vector<Finding> known;  // what did not fit already when the log was repaired; the first kMostFindings
  bool isCancelled = false;

  static constexpr std::size_t kMostFindings = 100;
  [[nodiscard]] bool IsSound() const { return allFindings == 0 && !isCancelled; }
};

/// Recomputes every seal from the exposures, taken back to what they were when they were added, and the
/// history; and sees whether the log still holds the state that `anchor` names. As long as it runs nobody
/// else can write to the file. Throws dao::EngineError when the log cannot be read.
[[nodiscard]] Verification Verify(dao::Database& log, const std::optional<Anchor>& anchor = std::nullopt,
                                  const Progress& progress = {});

/// Whether the log holds the state that the anchor names; not when it has no seals.
[[nodiscard]] bool Holds(dao::Database& log, const Anchor& anchor);

/// The first thing that is wrong with the newest seals: what can be seen at once when a log is opened.
[[nodiscard]] std::optional<Finding> CheckNewest(dao::Database& log);

}  // namespace varnlog::seals
