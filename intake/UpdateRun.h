#pragma once

#include <cstdint>
#include <string>

#include "core/Globals.h"
#include "core/TextLookup.h"
#include "core/UserDialog.h"
#include "intake/RunStep.h"
#include "platform/Clock.h"

namespace varnlog::intake {

/// What a run asks of whoever shows it.
class UpdateView : public core::UserDialog {
 public:
  /// Before the first record.
  virtual void SetRecordCount(std::int64_t records) = 0;
  /// After every record, skipped ones included. Events may be handled here; a user who cancels sets
  /// Globals::UpdateDeclinedGl.
  virtual void Advance(std::int64_t recordsDone) = 0;
};

struct UpdateResult {
  enum class Outcome {
    kNothingPending,  // no exchange file
    kDone,
    kCancelled,  // rolled back, the exchange file untouched
    kFailed,     // rolled back; `error` says why
  };
  Outcome outcome = Outcome::kNothingPending;
  std::int64_t read = 0;     // records
  std::int64_t added = 0;    // rows
  std::int64_t changed = 0;  // rows
  std::int64_t skipped = 0;  // read - added - changed
  std::string error;         // the reason that was shown, for kFailed
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

/// True when the exchange file, or a copy that an interrupted run left, holds data.
[[nodiscard]] bool ExchangeDataPending(const core::Globals& globals);

}  // namespace varnlog::intake
