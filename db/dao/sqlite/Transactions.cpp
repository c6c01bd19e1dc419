#include <exception>

#include <sqlite3.h>

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
  SetSync(State()->options.userCommitSync);
  try {
    if (IsReadOnly())
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
  try {
    RequireIntactWork();
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
    SetSync(State()->options.implicitCommitSync);
    ReleaseMemory();
  } catch (const std::exception&) {
    // The transaction is over either way; a larger cache does no harm.
    return;
  }
}

void Connection::BeginPart() {
  Execute("SAVEPOINT part");
}

void Connection::KeepPart() {
  Execute("RELEASE part");
}

void Connection::UndoPart() noexcept {
  if (!IsOpen() || !InTransaction()) return;
  try {
    Execute("ROLLBACK TO part; RELEASE part");
  } catch (const EngineError&) {
    // Then the storage has undone the whole transaction.
    return;
  }
}

void Connection::RequireIntactWork() const {
  if (inWork_ && !InTransaction())
    throw EngineError(ErrorNumber::kInvalidTransaction,
                      "The transaction had to be undone after a failure; nothing more is written in it.");
}

void Connection::WriteAhead() {
  if (IsReadOnly() || !InTransaction()) return;
  const int result = sqlite3_db_cacheflush(handle_);
  if (result != SQLITE_OK) Throw(result);
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

bool Connection::BeginChange() {
  RequireWritable();
  RequireIntactWork();
  EndLeftOver();
  if (InTransaction()) return false;
  beginWrite_.Run();
  return true;
}

void Connection::UndoChange() noexcept {
  if (!IsOpen()) return;
  TellEnded();
  try {
    if (InTransaction()) rollback_.Run();
  } catch (const std::exception&) {
    hasLeftOver_ = true;
  }
}

void Connection::CommitChange() {
  TellCommitting();
  commit_.Run();
  TellEnded();
}

}  // namespace varnlog::dao
