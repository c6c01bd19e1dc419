#include "intake/UpdateRun.h"

#include <utility>

#include "core/Messages.h"
#include "intake/ExposureWriter.h"
#include "intake/IntakeSources.h"
#include "intake/RunMark.h"

namespace varnlog::intake {

using core::operator""_key;

namespace {

using Outcome = UpdateResult::Outcome;

/// Rolls back unless it was committed. Holds the log's write lock, so that no other workstation reads the
/// exchange file meanwhile.
class Transaction {
 public:
  explicit Transaction(db::CJetEngine& engine) : engine_(engine), open_(engine.TransactionStart()) {}
  ~Transaction() {
    if (open_) engine_.TransactionRollback();
  }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  [[nodiscard]] bool IsOpen() const { return open_; }
  [[nodiscard]] bool Commit() {
    open_ = false;
    return engine_.TransactionCommit();
  }

 private:
  db::CJetEngine& engine_;
  bool open_;
};

IntakeSources SourcesOf(const core::Globals& globals, const RunOptions& options) {
  return {platform::ToPath(globals.ExchangeFileGl), platform::ToPath(globals.strDataFileGl),
          globals.LanguageGl, options};
}

class Run {
 public:
  Run(const UpdateContext& context, UpdateView& view, const RunOptions& options)
      : globals_(context.globals),
        texts_(context.texts),
        now_(context.clock.Now()),
        view_(view),
        options_(options),
        sources_(SourcesOf(context.globals, options)) {}

  UpdateResult Execute();

 private:
  [[nodiscard]] bool Prepare(db::CJetEngine& engine);
  void Work(db::CJetEngine& engine);
  void TakeAll(dao::Database& log);
  void Finish(db::CJetEngine& engine, Transaction& transaction);
  void TidyUp(db::CJetEngine& engine) const;
  [[nodiscard]] bool OpenSources(const RunId& committed);
  void Fail(core::TextKey key, std::string_view reason = {});
  void Conclude();
  core::MessageAnswer Say(std::string text, core::MessageIcon icon, core::MessageButtons buttons);

  core::Globals& globals_;
  const core::TextLookup& texts_;
  const platform::FixedClock now_;  // one moment for all records: what day it is need not be asked each time
  UpdateView& view_;
  const RunOptions& options_;
  IntakeSources sources_;
  UpdateResult result_;
  bool removalFailed_ = false;
};

core::MessageAnswer Run::Say(std::string text, core::MessageIcon icon, core::MessageButtons buttons) {
  return core::Messages(view_, texts_).ShowText(std::move(text), icon, buttons, "RU_XRUPDATE"_key);
}

/// Shown by Conclude(), when the transaction is over.
void Run::Fail(core::TextKey key, std::string_view reason) {
  result_.outcome = Outcome::kFailed;
  result_.error = core::FilledText(texts_, key, {{"strError", std::string(reason)}});
}

bool Run::OpenSources(const RunId& committed) {
  for (;;) {
    switch (sources_.Open(committed)) {
      case IntakeSources::Opened::kReady:
        return true;
      case IntakeSources::Opened::kCannotRead:
        Fail("RU_ERR_FILEREAD"_key);
        return false;
      case IntakeSources::Opened::kIsLink:
        Fail("RU_ERR_LINK"_key);
        return false;
      case IntakeSources::Opened::kCannotOpen:
        break;
    }
    const auto answer = Say(texts_.GetText("RU_ERR_XRUPDATE"_key), core::MessageIcon::kNone,
                            core::MessageButtons::kRetryCancel);
    if (answer == core::MessageAnswer::kRetry) continue;
    globals_.UpdateDeclinedGl = true;
    result_.outcome = Outcome::kCancelled;
    return false;
  }
}

void Run::TakeAll(dao::Database& log) {
  ExposureWriter writer(log, {std::to_string(globals_.kVGl), std::to_string(globals_.mAGl)}, texts_, view_,
                        now_);
  view_.SetRecordCount(sources_.TokenCount());
  const bool whole = sources_.ForEachToken([&](CToken& token) {
    const ExposureWriter::Done done = writer.Take(token);
    if (done == ExposureWriter::Done::kAdded) ++result_.added;
    if (done == ExposureWriter::Done::kChanged) ++result_.changed;
    view_.Advance(++result_.read);
    return !globals_.UpdateDeclinedGl;
  });
  result_.skipped = result_.read - result_.added - result_.changed;
  if (globals_.UpdateDeclinedGl && result_.read > 0) {
    result_.outcome = Outcome::kCancelled;
  } else if (!whole) {
    Fail("RU_ERR_FILEREAD"_key);
  }
}

/// Rows, removal, commit: the order is the point. Until the commit, what is removed is in the safe copy.
void Run::Finish(db::CJetEngine& engine, Transaction& transaction) {
  dao::Database& log = *engine.Database();
  // Records that changed nothing stand in the log already, or it has no use for them: they need no safe copy.
  const bool isNeeded = result_.added + result_.changed > 0 || !sources_.CopiedRun().empty();
  const RunId id = sources_.HasRead() && isNeeded ? NewRunId() : RunId();
  if (!id.empty()) {
    WriteRunMark(log, id);
    // A full disk must show now, while nothing is removed yet, and not at the commit.
    if (!engine.RefreshCache()) return Fail("RU_ERR_WRITE"_key, engine.LastError());
    options_.Reached(RunStep::kRowsWritten);
  }
  const bool secured = sources_.Secure(id);
  // Whichever run's copy stays, all that is in it is in the log with this commit.
  const RunId stays = secured ? RunId() : sources_.StandingCopy();
  if (!stays.empty()) WriteRunMark(log, stays);
  const bool removed = secured && sources_.RemoveRead();
  if (!transaction.Commit()) return Fail("RU_ERR_WRITE"_key, engine.LastError());
  removalFailed_ = !removed;
  options_.Reached(RunStep::kCommitted);
  TidyUp(engine);
}

/// Deletes the copy. Another run may have begun since the commit, and the copy there may be its own: that is
/// looked at under the write lock. Who does not get the lock leaves the copy; the next run knows it is done.
void Run::TidyUp(db::CJetEngine& engine) const {
  const IntakeCopy copy(platform::ToPath(globals_.strDataFileGl));
  if (!copy.Exists()) return;
  // The commit itself has to be on the disk before its copy goes.
  if (platform::FlushFolder(copy.Path().parent_path())) return;
  try {
    const Transaction lock(engine);
    if (!lock.IsOpen() || copy.PeekId() != ReadRunMark(*engine.Database())) return;
    if (copy.Delete()) options_.Reached(RunStep::kCopyGone);
  } catch (const dao::EngineError&) {
    return;
  }
}

bool Run::Prepare(db::CJetEngine& engine) {
  if (!OpenSources(ReadRunMark(*engine.Database()))) return false;
  if (sources_.IsEmpty()) result_.outcome = Outcome::kNothingPending;
  return !sources_.IsEmpty();
}

void Run::Work(db::CJetEngine& engine) {
  try {
    Transaction transaction(engine);
    if (!transaction.IsOpen()) return Fail("RU_ERR_WRITE"_key, engine.LastError());
    result_.outcome = Outcome::kDone;
    if (Prepare(engine)) TakeAll(*engine.Database());
    if (result_.outcome == Outcome::kDone) Finish(engine, transaction);
  } catch (const dao::EngineError& error) {
    Fail("RU_ERR_WRITE"_key, error.what());
  }
}

/// Messages about the whole run are shown when nobody waits for the log any more.
void Run::Conclude() {
  if (result_.outcome != Outcome::kDone) {
    result_.added = 0;
    result_.changed = 0;
    result_.skipped = 0;
  }
  if (result_.outcome == Outcome::kFailed) {
    Say(result_.error, core::MessageIcon::kCritical, core::MessageButtons::kOk);
  }
  for (const IntakeSources::Damaged& damaged : sources_.FoundDamaged()) {
    std::string text = texts_.GetText("RU_ERR_DAMAGED"_key);
    text = core::ReplacePlaceholder(text, "strFile", platform::FromPath(damaged.path));
    text = core::ReplacePlaceholder(text, "strKeptAs", platform::FromPath(damaged.keptAs));
    Say(std::move(text), core::MessageIcon::kCritical, core::MessageButtons::kOk);
  }
  if (removalFailed_) {
    Say(texts_.GetText("RU_ERR_FILEDEL"_key), core::MessageIcon::kCritical, core::MessageButtons::kOk);
  }
  if (result_.outcome == Outcome::kDone && result_.read > 0) {
    core::Messages(view_, texts_).Inform("RU_SUCCESS"_key);
  }
}

UpdateResult Run::Execute() {
  if (!sources_.AnythingThere()) {
    sources_.Sweep();
    return result_;
  }
  db::CJetEngine* const engine = globals_.LogEngineGl.get();
  if (engine == nullptr || engine->Database() == nullptr) {
    Fail("RU_ERR_WRITE"_key, engine == nullptr ? std::string() : engine->LastError());
  } else {
    Work(*engine);
  }
  Conclude();
  return result_;
}

}  // namespace

UpdateResult RunUpdate(const UpdateContext& context, UpdateView& view, const RunOptions& options) {
  return Run(context, view, options).Execute();
}

bool ExchangeDataPending(const core::Globals& globals) {
  const IntakeSources sources = SourcesOf(globals, {});
  return sources.IsPending([&globals] {
    try {
      const db::CJetEngine* const engine = globals.LogEngineGl.get();
      if (engine != nullptr && engine->Database() != nullptr) return ReadRunMark(*engine->Database());
    } catch (const dao::EngineError&) {
      // A copy of which it is not known whether it is done counts as pending.
      return RunId();
    }
    return RunId();
  });
}

}  // namespace varnlog::intake
