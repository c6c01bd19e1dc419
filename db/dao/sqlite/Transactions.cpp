#include <exception>

#include <sqlite3.h>

#include "db/dao/ChangeJournal.h"
#include "db/dao/DBEngine.h"
#include "db/dao/sqlite/Connection.h"

namespace varnlog::dao {

bool Connection::InTransaction() const {
  return sqlite3_get_autocommit(Handle()) == 0;
}

// A scope whose end failed (memory ran out) leaves its transaction open. Whoever took that for one around him
// would never commit.
void Connection::EndLeftOver() {
  if (hasLeftOver_ && InTransaction()) rollback_.Run();
  hasLeftOver_ = false;
}

void Connection::BeginWork() {
  if (inWork_) throw EngineError(ErrorNumber::kInvalidTransaction, "A transaction is already open.");
  EndLeftOver();
  SetCache(true);
  SetSync(state_->options.userCommitSync);
  try {
    if (mode_.readOnly)
      begin_.Run();
    else
      beginWrite_.Run();
  } catch (const std::exception&) {
    EndWork();
    throw;
  }
  inWork_ = true;
}

void Connection::CommitWork() {
  RequireIntactWork();
  try {
    TellCommitting();
    commit_.Run();
  } catch (const std::exception&) {
    RollbackWork();
    throw;
  }
  EndWork();
}

void Connection::RollbackWork() {
  if (InTransaction()) rollback_.Run();
  EndWork();
}

// Whatever was read inside the transaction may be undone, and the storage does not count that as a change.
void Connection::EndWork() noexcept {
  inWork_ = false;
  ++epoch_;
  TellEnded();
  try {
    SetCache(false);
    SetSync(state_->options.implicitCommitSync);
    ReleaseMemory();
  } catch (const std::exception&) {
    // The transaction is over either way; a larger cache does no harm.
    return;
  }
}

void Connection::TellCommitting() {
  if (journal_ == nullptr) return;
  Database self(shared_from_this());
  journal_->Committing(self);
}

void Connection::TellEnded() noexcept {
  if (journal_ != nullptr) journal_->Ended();
}

ChangeScope::ChangeScope(Connection& connection) : connection_(connection) {
  connection_.Execute("SAVEPOINT change");
}

ChangeScope::~ChangeScope() {
  if (!isOpen_ || !connection_.IsOpen() || !connection_.InTransaction()) return;
  try {
    connection_.Execute("ROLLBACK TO change; RELEASE change");
  } catch (const EngineError&) {
    // Then the storage has undone the whole transaction.
    return;
  }
}

void ChangeScope::Keep() {
  connection_.Execute("RELEASE change");
  isOpen_ = false;
}

void Connection::RequireIntactWork() const {
  if (inWork_ && !InTransaction())
    throw EngineError(ErrorNumber::kInvalidTransaction,
                      "The transaction had to be undone after a failure; nothing more is written in it.");
}

void Connection::WriteAhead() {
  if (mode_.readOnly || !InTransaction()) return;
  const int result = sqlite3_db_cacheflush(handle_);
  if (result != SQLITE_OK) Throw(result);
}

ChangeGroup::ChangeGroup(std::shared_ptr<Connection> connection)
    : connection_(std::move(connection)), scope_(std::make_unique<WriteScope>(*connection_)) {}
ChangeGroup::ChangeGroup(ChangeGroup&&) noexcept = default;
ChangeGroup::~ChangeGroup() = default;

void ChangeGroup::Commit() {
  scope_->Commit();
}

ReadScope::ReadScope(Connection& connection) : connection_(connection) {
  connection_.EndLeftOver();
  if (connection_.InTransaction()) return;
  connection_.begin_.Run();
  began_ = true;
}

ReadScope::~ReadScope() {
  if (!began_ || !connection_.IsOpen() || !connection_.InTransaction()) return;
  try {
    connection_.commit_.Run();
  } catch (const std::exception&) {
    connection_.hasLeftOver_ = true;
  }
}

WriteScope::WriteScope(Connection& connection) : connection_(connection) {
  connection_.RequireWritable();
  connection_.RequireIntactWork();
  connection_.EndLeftOver();
  if (connection_.InTransaction()) return;
  connection_.beginWrite_.Run();
  began_ = true;
}

WriteScope::~WriteScope() {
  if (!began_ || !connection_.IsOpen()) return;
  connection_.TellEnded();
  if (!connection_.InTransaction()) return;
  try {
    connection_.rollback_.Run();
  } catch (const std::exception&) {
    connection_.hasLeftOver_ = true;
  }
}

void WriteScope::Commit() {
  if (!began_) return;
  connection_.TellCommitting();
  connection_.commit_.Run();
  began_ = false;
  connection_.TellEnded();
}

}  // namespace varnlog::dao
