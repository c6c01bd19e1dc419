#include <algorithm>
#include <chrono>
#include <exception>
#include <thread>
#include <utility>

#include "db/dao/postgres/ServerSchema.h"
#include "db/dao/postgres/ServerStorage.h"
#include "db/dao/sql/JetSql.h"

// Transactions and their parts: who may write, what is kept, what is undone.

namespace varnlog::dao {

namespace {

using Clock = std::chrono::steady_clock;

/// How long the outcome of a commit is asked for.
constexpr std::chrono::seconds kOutcomePatience(15);

constexpr const char* kReadingSql = "BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY";

std::string LockOf(const LinkFile& link) {
  return "SELECT pg_advisory_xact_lock(hashtextextended(" + QuoteText(link.schema) + ", 11))";
}

}  // namespace

void ServerStorage::BeginWriting() {
  EndReadTransaction();
  // A server that follows another one may have taken its place, or the other one be back.
  if (session_ != nullptr && session_->IsStandby()) session_.reset();
  const EngineOptions& options = State()->options;
  const std::int64_t patience =
      std::max<std::int64_t>(1, std::int64_t{options.lockRetry} * options.lockDelay);
  const std::string script =
      "BEGIN; SET LOCAL lock_timeout = " + std::to_string(patience) + "; " + LockOf(link_) + "; " + kStateSql;
  try {
    counters_ = StateFrom(RunScript(script));
  } catch (const EngineError&) {
    Undo();
    throw;
  }
  usedCounters_.clear();
  changes_ = std::max(changes_, counters_["changes"]);
  ++writeRights_;
  transaction_ = Transaction::kWriting;
}

std::string ServerStorage::CommitScript() const {
  const std::string number = std::to_string(changes_ + 1);
  std::string values = "('changes', " + number + ")";
  for (const auto& [table, last] : usedCounters_)
    values += ", (" + QuoteText(table) + ", " + std::to_string(last) + ")";
  return "UPDATE varnlog_state AS state SET value = new.value FROM (VALUES " + values +
         ") AS new (name, value) WHERE state.name = new.name; "
         "INSERT INTO varnlog_openings (id, number, at) VALUES ('" +
         id_ + "', " + std::to_string(transactions_) +
         ", now()) ON CONFLICT (id) DO UPDATE SET number = EXCLUDED.number, at = EXCLUDED.at; NOTIFY " +
         channel_ + ", '" + number + "'; COMMIT";
}

// A script that is to be written last goes along.
void ServerStorage::Commit() {
  const std::string script = std::exchange(script_, {});
  SettleAdded();
  ++transactions_;
  try {
    static_cast<void>(Line().RunScript(script + CommitScript()));
  } catch (const EngineError& error) {
    if (error.number() != ErrorNumber::kConnectionLost || transaction_ == Transaction::kLost) throw;
    transaction_ = Transaction::kLost;
    if (!WasCommitted())
      throw EngineError(ErrorNumber::kConnectionLost, "The connection to the server of '" + Path() +
                                                          "' was lost; nothing of the change was kept.");
  }
  ++changes_;
  ++ownCommitted_;
}

// The lock is held as long as the lost connection's transaction lasts, so with it in hand the answer is
// final.
bool ServerStorage::WasCommitted() {
  const auto end = Clock::now() + kOutcomePatience;
  do {
    try {
      const auto session = std::make_unique<ServerSession>(link_, Path(), State()->waiting);
      if (!session->IsStandby()) {
        const ServerResult found =
            session->RunScript("BEGIN; SET LOCAL lock_timeout = '15s'; SET LOCAL search_path TO " +
                               QuoteIdentifier(link_.schema) + "; " + LockOf(link_) +
                               "; SELECT count(*) FROM varnlog_openings WHERE id = '" + id_ +
                               "' AND number = " + std::to_string(transactions_));
        return found.Number(0, 0) > 0;
      }
    } catch (const EngineError& error) {
      if (error.number() == ErrorNumber::kCancelled) break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
  } while (Clock::now() < end);
  throw EngineError(ErrorNumber::kOutcomeUnknown,
                    "The connection to the server of '" + Path() +
                        "' was lost, and whether the change was kept cannot be found out now.");
}

void ServerStorage::Undo() noexcept {
  ForgetAdded();
  if (session_ == nullptr || !session_->IsUp()) return;
  session_->Abandon();
  try {
    static_cast<void>(session_->RunScript("ROLLBACK"));
  } catch (const std::exception&) {
    // The server undoes what a lost connection has begun.
    session_.reset();
  }
}

void ServerStorage::EndTransaction() noexcept {
  transaction_ = Transaction::kNone;
  inWork_ = false;
  inPart_ = false;
  ForgetAdded();
  usedCounters_.clear();
  years_.clear();
  ++epoch_;
  TellEnded();
}

void ServerStorage::RequireIntactWork() const {
  if (inWork_ && transaction_ == Transaction::kLost)
    throw EngineError(
        ErrorNumber::kInvalidTransaction,
        "The transaction was undone when the connection was lost; nothing more is written in it.");
}

void ServerStorage::BeginWork() {
  if (inWork_) throw EngineError(ErrorNumber::kInvalidTransaction, "A transaction is already open.");
  if (IsReadOnly())
    BeginReading();
  else
    BeginWriting();
  inWork_ = true;
}

void ServerStorage::CommitWork() {
  if (IsReadOnly()) return RollbackWork();
  try {
    RequireIntactWork();
    TellCommitting();
    Commit();
  } catch (const std::exception&) {
    RollbackWork();
    throw;
  }
  EndTransaction();
}

void ServerStorage::RollbackWork() {
  if (IsReadOnly()) --readers_;
  Undo();
  EndTransaction();
}

bool ServerStorage::BeginChange() {
  RequireWritable();
  RequireIntactWork();
  if (transaction_ == Transaction::kWriting) return false;
  BeginWriting();
  return true;
}

void ServerStorage::CommitChange() {
  TellCommitting();
  Commit();
  EndTransaction();
}

void ServerStorage::UndoChange() noexcept {
  Undo();
  EndTransaction();
}

// In an update's transaction a part is what was not sent yet: there are thousands of them.
void ServerStorage::BeginPart() {
  partCounters_ = usedCounters_;
  inPart_ = true;
  isPartSaved_ = !inWork_ || !isBulk_;
  isPartBegun_ = false;
  partLength_ = script_.size();
  partSent_ = sent_;
}

void ServerStorage::NoteWritten(const TableSchema& table) {
  ++written_[table.name];
  if (!inPart_ || !isPartSaved_ || std::exchange(isPartBegun_, true)) return;
  partLength_ = script_.size();
  partSent_ = sent_;
  script_ += "SAVEPOINT part; ";
}

void ServerStorage::KeepPart() {
  if (isPartBegun_) {
    script_ += "RELEASE SAVEPOINT part; ";
    SendAdded();
  }
  inPart_ = false;
}

void ServerStorage::UndoPart() noexcept {
  ++undoneParts_;
  usedCounters_ = partCounters_;
  inPart_ = false;
  if (isPartSaved_ && !isPartBegun_) return;
  if (sent_ == partSent_) {
    script_.resize(partLength_);
    return;
  }
  ForgetAdded();
  if (session_ == nullptr || !session_->IsUp()) return;
  session_->Abandon();
  try {
    if (isPartSaved_) {
      static_cast<void>(session_->RunScript("ROLLBACK TO SAVEPOINT part; RELEASE SAVEPOINT part"));
      return;
    }
  } catch (const std::exception&) {
    // What cannot be undone by itself is undone with all the rest.
  }
  Undo();
  transaction_ = Transaction::kLost;
}

void ServerStorage::BeginReading() {
  if (transaction_ == Transaction::kNone) {
    static_cast<void>(RunScript(kReadingSql));
    transaction_ = Transaction::kReading;
  }
  ++readers_;
}

void ServerStorage::EndReading() noexcept {
  --readers_;
  if (readers_ > 0 || inWork_) return;
  if (transaction_ == Transaction::kReading) Undo();
  if (transaction_ != Transaction::kWriting) transaction_ = Transaction::kNone;
}

// Readers that go on see what is there from now on.
void ServerStorage::EndReadTransaction() {
  if (transaction_ == Transaction::kReading) Undo();
  if (transaction_ != Transaction::kWriting) transaction_ = Transaction::kNone;
}

}  // namespace varnlog::dao
