#include "intake/UpdateRun.h"

#include <utility>

#include "core/EngineMessages.h"
#include "core/Messages.h"
#include "db/dao/ServerLink.h"
#include "intake/ExposureWriter.h"
#include "intake/IntakeSources.h"
#include "intake/RecordNotices.h"
#include "intake/RunMark.h"
#include "seals/Ledger.h"

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

/// The file beside which the safe copy lies: the log, or, where that is on a server, the exchange file.
const std::string& CopiedBeside(const core::Globals& globals) {
  return dao::IsServerLink(globals.strDataFileGl) ? globals.ExchangeFileGl : globals.strDataFileGl;
}

IntakeSources SourcesOf(const core::Globals& globals, const RunOptions& options) {
  return {platform::ToPath(globals.ExchangeFileGl), platform::ToPath(CopiedBeside(globals)),
          globals.LanguageGl, options};
}

RunOptions WithWaiting(RunOptions options, UpdateView& view) {
  options.onWait = [&view] { view.Wait(); };
  return options;
}

/// Not set when the log is empty.
platform::DateTime NewestExposure(dao::Database& log) {
  const auto rows = log.OpenRecordset("SELECT TXray.tXrayTs FROM TXray ORDER BY TXray.tXrayTs DESC;",
                                      dao::RecordsetType::kDynaset);
  return rows->IsEOF() ? platform::DateTime() : rows->Fields("tXrayTs").Date();
}

std::string Dotted(platform::DateTime date) {
  const std::string iso = date.ToIso();
  return iso.substr(8, 2) + '.' + iso.substr(5, 2) + '.' + iso.substr(0, 4);
}

class Run {
 public:
  Run(const UpdateContext& context, UpdateView& view, const RunOptions& options)
      : globals_(context.globals),
        texts_(context.texts),
        now_(context.clock.Now()),
        view_(view),
        messages_(view, context.texts),
        options_(WithWaiting(options, view)),
        sources_(SourcesOf(context.globals, options_)),
        notices_(context.texts) {}

  UpdateResult Execute();

 private:
  /// What the user is to be asked when the transaction is over.
  enum class Question { kNone, kRetryOpening, kCancel };

  void Take(db::CJetEngine& engine);
  [[nodiscard]] bool ClockIsBelieved(db::CJetEngine& engine);
  [[nodiscard]] bool DatesAreAccepted(const std::vector<AppliedBytes>& applied);
  [[nodiscard]] bool GoesOnAfter(Question question);
  [[nodiscard]] Question Attempt(db::CJetEngine& engine);
  [[nodiscard]] Question TakeAll(dao::Database& log);
  [[nodiscard]] ExposureWriter::Done TakeOne(ExposureWriter& writer, CToken& token);
  void Finish(db::CJetEngine& engine, Transaction& transaction);
  void TidyUp(db::CJetEngine& engine) const;
  void Decline();
  void Fail(core::TextKey key, std::string_view reason = {});
  void FailToWrite(const dao::EngineError& error);
  void Conclude();

  core::Globals& globals_;
  const core::TextLookup& texts_;
  const platform::FixedClock now_;  // one moment for all records: what day it is need not be asked each time
  UpdateView& view_;
  const core::Messages messages_;
  const RunOptions options_;
  IntakeSources sources_;
  RecordNotices notices_;
  UpdateResult result_;
};

/// Shown by Conclude(), when the transaction is over.
void Run::Fail(core::TextKey key, std::string_view reason) {
  result_.outcome = Outcome::kFailed;
  result_.error = core::FilledText(texts_, key, {{"strError", std::string(reason)}});
}

void Run::FailToWrite(const dao::EngineError& error) {
  const bool isAway = core::IsServerAway(error.number());
  Fail(isAway ? "RU_ERR_AWAY"_key : "RU_ERR_WRITE"_key, core::EngineErrorText(texts_, error));
  result_.serverAway = isAway;
}

void Run::Decline() {
  globals_.UpdateDeclinedGl = true;
  result_.outcome = Outcome::kCancelled;
}

/// A clock that was set back makes days of today lie in the future, and their exposures become ones of 1880.
bool Run::ClockIsBelieved(db::CJetEngine& engine) {
  constexpr std::int64_t kDay = 24 * 60 * 60;
  if (options_.despiteClock) return true;
  const platform::DateTime newest = NewestExposure(*engine.Database());
  const platform::DateTime now = now_.Now();
  if (!newest.IsSet() || newest.SecondsSinceEpoch() - now.SecondsSinceEpoch() <= kDay) return true;
  if (messages_.Confirm("RU_CLOCK"_key, {{"dNow", Dotted(now)}, {"dNewest", Dotted(newest)}},
                        "RU_XRUPDATE"_key)) {
    return true;
  }
  result_.clockDoubted = true;
  Decline();
  return false;
}

/// Before the transaction, so that no other workstation waits while the user reads. Other runs may take these
/// records first, and more may come; what was not said here is said at the end.
bool Run::DatesAreAccepted(const std::vector<AppliedBytes>& applied) {
  IntakeSources ahead = SourcesOf(globals_, options_);
  ahead.SetApplied(applied);
  ahead.OpenToLook();
  RecordDates dates(now_);
  auto answer = core::MessageAnswer::kOk;
  std::int64_t looked = 0;
  const auto look = [&](CToken& token) {
    constexpr std::int64_t kBetweenEvents = 4096;
    if (++looked % kBetweenEvents == 0) view_.Wait();
    if (!IsExposure(token)) return true;
    dates.Read(token);
    for (const DefaultTaken& taken : dates.Defaults()) {
      std::string text = TextOf(texts_, token, taken);
      notices_.Said(text);
      answer = view_.Show({.text = std::move(text),
                           .title = texts_.GetText("RU_XRUPDATE"_key),
                           .icon = core::MessageIcon::kCritical,
                           .choices = {{core::MessageAnswer::kOk, "GL_OK"_key},
                                       {core::MessageAnswer::kList, "RU_LISTREST"_key},
                                       {core::MessageAnswer::kCancel, "RU_CANCELRUN"_key}}});
      if (answer == core::MessageAnswer::kList || answer == core::MessageAnswer::kCancel) return false;
    }
    return true;
  };
  static_cast<void>(ahead.ForEachToken(look, Extent::kUpToTime));
  if (answer == core::MessageAnswer::kCancel) Decline();
  return answer != core::MessageAnswer::kCancel;
}

ExposureWriter::Done Run::TakeOne(ExposureWriter& writer, CToken& token) {
  using Done = ExposureWriter::Done;
  const Done done = writer.Take(token);
  if (done == Done::kNoExposure) return done;
  for (const DefaultTaken& taken : writer.Defaults()) notices_.AddDefault(token, taken);
  for (const core::TextKey field : writer.CutFields()) notices_.AddCut(token, field);
  if (done == Done::kKnown && !writer.Defaults().empty()) notices_.AddSkipped(token);
  return done;
}

Run::Question Run::TakeAll(dao::Database& log) {
  // A million rows need not be looked at twice: the ledger refuses what the log's rules would.
  dao::RulesSuspension suspension = log.SuspendRules();
  ExposureWriter writer(log, {std::to_string(globals_.kVGl), std::to_string(globals_.mAGl)}, now_);
  view_.SetRecordCount(sources_.TokenCount());
  bool isCancelWanted = false;
  const auto take = [&](CToken& token) {
    const ExposureWriter::Done done = TakeOne(writer, token);
    if (done == ExposureWriter::Done::kAdded) ++result_.added;
    if (done == ExposureWriter::Done::kChanged) ++result_.changed;
    view_.Advance(++result_.read);
    isCancelWanted = view_.CancelIsWanted();
    return !globals_.UpdateDeclinedGl && !isCancelWanted;
  };
  const auto expect = [&writer](std::span<const CToken> tokens) { writer.Expect(tokens); };
  const bool whole = sources_.ForEachToken(take, Extent::kAll, expect);
  suspension.End();
  result_.skipped = result_.read - result_.added - result_.changed;
  if (result_.read > 0 && (globals_.UpdateDeclinedGl || isCancelWanted)) {
    result_.outcome = Outcome::kCancelled;
  } else if (!whole) {
    Fail("RU_ERR_FILEREAD"_key);
  }
  return isCancelWanted ? Question::kCancel : Question::kNone;
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
    if (!engine.RefreshCache()) return FailToWrite(core::TrappedError(engine));
    options_.Reached(RunStep::kRowsWritten);
  }
  const bool secured = sources_.Secure(id);
  if (globals_.LedgerGl) globals_.LedgerGl->NoteExchange(sources_.Digest());
  // Whichever run's copy stays, all that is in it is in the log with this commit.
  const RunId stays = secured ? RunId() : sources_.StandingCopy();
  if (!stays.empty()) WriteRunMark(log, stays);
  const bool removed = secured && sources_.RemoveRead();
  WriteAppliedBytes(log, sources_.StillApplied());
  if (!transaction.Commit()) return FailToWrite(core::TrappedError(engine));
  result_.leftInFile = !removed;
  options_.Reached(RunStep::kCommitted);
  TidyUp(engine);
}

/// Deletes the copy. Another run may have begun since the commit, and the copy there may be its own: that is
/// looked at under the write lock. Who does not get the lock leaves the copy; the next run knows it is done.
void Run::TidyUp(db::CJetEngine& engine) const {
  IntakeCopy copy(platform::ToPath(CopiedBeside(globals_)));
  if (!copy.Exists()) return;
  // The commit itself has to be on the disk before its copy goes.
  if (platform::FlushFolder(copy.Path().parent_path())) return;
  try {
    const Transaction lock(engine);
    if (!lock.IsOpen() || copy.PeekId() != ReadRunMark(*engine.Database(), copy.PeekId())) return;
    if (copy.Delete()) options_.Reached(RunStep::kCopyGone);
  } catch (const dao::EngineError&) {
    return;
  }
}

/// One transaction, committed or rolled back.
Run::Question Run::Attempt(db::CJetEngine& engine) {
  result_ = {};
  notices_.Restart();
  try {
    const seals::Purpose purpose(globals_.LedgerGl.get(), seals::SealKind::kIntake);
    Transaction transaction(engine);
    if (!transaction.IsOpen()) {
      FailToWrite(core::TrappedError(engine));
      return Question::kNone;
    }
    dao::Database& log = *engine.Database();
    sources_.SetApplied(ReadAppliedBytes(log));
    switch (sources_.Open(ReadRunMark(log, sources_.StandingCopy()))) {
      case IntakeSources::Opened::kReady:
        break;
      case IntakeSources::Opened::kCannotOpen:
        return Question::kRetryOpening;
      case IntakeSources::Opened::kCannotRead:
        Fail("RU_ERR_FILEREAD"_key);
        return Question::kNone;
      case IntakeSources::Opened::kIsLink:
        Fail("RU_ERR_LINK"_key);
        return Question::kNone;
    }
    if (sources_.IsEmpty()) return Question::kNone;
    result_.outcome = Outcome::kDone;
    const Question question = TakeAll(log);
    if (result_.outcome == Outcome::kDone) Finish(engine, transaction);
    return question;
  } catch (const dao::EngineError& error) {
    FailToWrite(error);
    return Question::kNone;
  }
}

bool Run::GoesOnAfter(Question question) {
  switch (question) {
    case Question::kNone:
      return false;
    case Question::kCancel:
      view_.AskCancel();
      return !globals_.UpdateDeclinedGl;
    case Question::kRetryOpening:
      break;
  }
  const auto answer = messages_.Show({.key = "RU_ERR_XRUPDATE"_key,
                                      .icon = core::MessageIcon::kNone,
                                      .buttons = core::MessageButtons::kRetryCancel,
                                      .title = "RU_XRUPDATE"_key});
  if (answer != core::MessageAnswer::kRetry) Decline();
  return answer == core::MessageAnswer::kRetry;
}

void Run::Take(db::CJetEngine& engine) {
  std::vector<AppliedBytes> applied;
  try {
    if (!ClockIsBelieved(engine)) return;
    applied = ReadAppliedBytes(*engine.Database());
  } catch (const dao::EngineError& error) {
    return FailToWrite(error);
  }
  sources_.SetApplied(applied);
  sources_.AwaitWhatIsBeingWritten();
  if (!DatesAreAccepted(applied)) return;
  while (GoesOnAfter(Attempt(engine))) {
  }
}

/// Messages about the whole run are shown when nobody waits for the log any more.
void Run::Conclude() {
  const bool done = result_.outcome == Outcome::kDone;
  if (!done) {
    result_.added = 0;
    result_.changed = 0;
    result_.skipped = 0;
  }
  const auto say = [this](core::TextKey key, const core::Placeholders& values) {
    messages_.Show({.key = key, .values = values, .title = "RU_XRUPDATE"_key});
  };
  if (result_.outcome == Outcome::kFailed) {
    messages_.ShowText(result_.error, core::MessageIcon::kCritical, core::MessageButtons::kOk,
                       "RU_XRUPDATE"_key);
  }
  for (const IntakeSources::Damaged& damaged : sources_.FoundDamaged()) {
    say("RU_ERR_DAMAGED"_key,
        {{"strFile", platform::FromPath(damaged.path)}, {"strKeptAs", platform::FromPath(damaged.keptAs)}});
  }
  if (result_.leftInFile) say("RU_ERR_FILEDEL"_key, {});
  if (done && !notices_.Unsaid().empty()) view_.ShowNotices(notices_.Unsaid());
  if (done && result_.read > 0) {
    const std::string counts = core::FilledText(texts_, "RU_COUNTS"_key,
                                                {{"lngAdded", view_.NumberText(result_.added)},
                                                 {"lngChanged", view_.NumberText(result_.changed)},
                                                 {"lngSkipped", view_.NumberText(result_.skipped)}});
    messages_.ShowText(texts_.GetText("RU_SUCCESS"_key) + counts, core::MessageIcon::kInformation);
  }
}

UpdateResult Run::Execute() {
  if (!sources_.AnythingThere()) {
    sources_.Sweep();
    return result_;
  }
  db::CJetEngine* const engine = globals_.LogEngineGl.get();
  if (engine == nullptr) {
    Fail("RU_ERR_WRITE"_key);
  } else if (engine->Database() == nullptr) {
    FailToWrite(core::TrappedError(*engine));
  } else {
    Take(*engine);
  }
  Conclude();
  return result_;
}

/// None when the log cannot be asked: then everything counts as pending.
std::vector<AppliedBytes> AppliedBytesOf(const core::Globals& globals) {
  try {
    const db::CJetEngine* const engine = globals.LogEngineGl.get();
    if (engine != nullptr && engine->Database() != nullptr) return ReadAppliedBytes(*engine->Database());
  } catch (const dao::EngineError&) {
    return {};
  }
  return {};
}

}  // namespace

UpdateResult RunUpdate(const UpdateContext& context, UpdateView& view, const RunOptions& options) {
  return Run(context, view, options).Execute();
}

std::uint64_t ExchangeBegin(const core::Globals& globals) {
  IntakeSources sources = SourcesOf(globals, {});
  sources.SetApplied(AppliedBytesOf(globals));
  return sources.ExchangeBegin();
}

bool ExchangeDataPending(const core::Globals& globals) {
  IntakeSources sources = SourcesOf(globals, {});
  if (platform::FileSize(platform::ToPath(globals.ExchangeFileGl)).value_or(0) > 0)
    sources.SetApplied(AppliedBytesOf(globals));
  return sources.IsPending([&globals, &sources] {
    try {
      const db::CJetEngine* const engine = globals.LogEngineGl.get();
      if (engine != nullptr && engine->Database() != nullptr)
        return ReadRunMark(*engine->Database(), sources.StandingCopy());
    } catch (const dao::EngineError&) {
      // A copy of which it is not known whether it is done counts as pending.
      return RunId();
    }
    return RunId();
  });
}

void SweepExchange(const core::Globals& globals) {
  SourcesOf(globals, {}).Sweep();
}

}  // namespace varnlog::intake
