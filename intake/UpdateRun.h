#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/Globals.h"
#include "core/TextLookup.h"
#include "core/UserDialog.h"
#include "intake/RunStep.h"
#include "platform/Clock.h"

namespace varnlog::intake {

/// What a run asks of whoever shows it. While a question or a message stands, the log is free for others.
class UpdateView : public core::UserDialog {
 public:
  /// Before the first record; again when the run begins anew after a question.
  virtual void SetRecordCount(std::int64_t records) = 0;
  /// After every record, skipped ones included. Events may be handled here; Globals::UpdateDeclinedGl ends
  /// the run.
  virtual void Advance(std::int64_t recordsDone) = 0;
  /// True when the user wants to cancel and is to be asked. Looked at after every record.
  [[nodiscard]] virtual bool CancelIsWanted() const { return false; }
  /// Asks, and sets Globals::UpdateDeclinedGl accordingly.
  virtual void AskCancel() {}
  /// Every few milliseconds while the run waits for another program.
  virtual void Wait() {}
  /// A number as the user reads it.
  [[nodiscard]] virtual std::string NumberText(std::int64_t number) const { return std::to_string(number); }
  /// What is to be said about single records and was not said while they were looked at.
  virtual void ShowNotices(const std::vector<std::string>& notices) = 0;
};

struct UpdateResult {
  enum class Outcome {
    kNothingPending,  // no exchange file
    kDone,
    kCancelled,  // rolled back, the exchange file untouched
    kFailed,     // rolled back; `error` says why
  };
  Outcome outcome = Outcome::kNothingPending;
  std::int64_t read = 0;      // records
  std::int64_t added = 0;     // rows
  std::int64_t changed = 0;   // rows
  std::int64_t skipped = 0;   // read - added - changed
  std::string error;          // the reason that was shown, for kFailed
  bool leftInFile = false;    // the rows are written, but what was read could not be removed
  bool clockDoubted = false;  // cancelled because the clock is behind the log
  bool serverAway = false;    // failed because the log's server cannot be asked now
};

struct UpdateContext {
  core::Globals& globals;
  const core::TextLookup& texts;
  const platform::Clock& clock;
};

/// Takes the records of the exchange file into the open log in one transaction, then removes them from the
/// file. Nothing is lost at any instant: see docs/intake.md.
[[nodiscard]] UpdateResult RunUpdate(const UpdateContext& context, UpdateView& view,
                                     const RunOptions& options = {});

/// True when the exchange file, or a copy that an interrupted run left, holds data. A record that the suite
/// is still writing is none yet.
[[nodiscard]] bool ExchangeDataPending(const core::Globals& globals);

/// Where in the exchange file the records begin that the log does not have: behind those that could not be
/// removed.
[[nodiscard]] std::uint64_t ExchangeBegin(const core::Globals& globals);

/// Deletes what earlier runs moved aside and nobody can write to any more: the names of patients are in it.
void SweepExchange(const core::Globals& globals);

}  // namespace varnlog::intake
