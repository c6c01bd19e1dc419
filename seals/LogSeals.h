#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>

#include "db/dao/DBEngine.h"
#include "platform/Author.h"
#include "platform/Clock.h"
#include "seals/LineSeal.h"
#include "seals/SealTables.h"
#include "seals/Verifier.h"

namespace varnlog::seals {

class Ledger;

/// Puts what was told of added exposures into the seal.
void AddRows(Seal& seal, LineSeal& rows);
/// The same for the rows of the history behind number `last`.
void AddHistory(Seal& seal, dao::Database& log, std::int64_t last);

/// Whether anything stands behind what is sealed, exposures up to `lastRow`.
[[nodiscard]] bool NeedsSeal(dao::Database& log, const SealedSoFar& sealed, std::int64_t lastRow);

/// Seals everything in the log that stands behind its last seal, within the caller's transaction: exposures
/// up to `lastRow`, rows of the history. The number of exposures. `progress` is asked now and then whether to
/// go on (dao::ErrorNumber::kCancelled when not).
std::int64_t SealUnsealed(dao::Database& log, Seal seal,
                          std::int64_t lastRow = std::numeric_limits<std::int64_t>::max(),
                          const Progress& progress = {});

/// What was found and done when a log was opened for writing.
struct OpenReport {
  bool tablesMade = false;         // it had none: everything in it is taken over
  bool rulesRestored = false;      // somebody had changed or removed the rules
  std::int64_t found = 0;          // exposures without a seal, now sealed
  std::int64_t locked = 0;         // corrections that a run of this workstation had left open
  std::optional<Finding> finding;  // the first thing that is wrong with the newest seals
};

/// Makes a log ready for changes: tables and rules where they are missing, seals where something has none,
/// the ledger installed. The log must be open for writing. Throws dao::EngineError with the log
/// as it was.
[[nodiscard]] OpenReport OpenLedger(dao::Database& log, const std::shared_ptr<Ledger>& ledger,
                                    const Progress& progress = {});

/// Seals that the work goes on in a log that lacks a state which a workstation had seen.
void SealGoingOn(dao::Database& log, const Ledger& ledger);

/// Seals a log that was just made of another one's rows, tables and rules included; within the caller's
/// transaction.
void SealConverted(dao::Database& log, const platform::Author& author, const platform::Clock& clock,
                   const Progress& progress = {});

}  // namespace varnlog::seals
