#include <exception>

#include <sqlite3.h>

#include "db/dao/sqlite/Connection.h"

namespace varnlog::dao {

bool Connection::InTransaction() const {
  return sqlite3_get_autocommit(Handle()) == 0;
}

void Connection::BeginWork() {
  if (inWork_) throw EngineError(ErrorNumber::kInvalidTransaction, "A transaction is already open.");
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
  try {
    SetCache(false);
    SetSync(state_->options.implicitCommitSync);
    ReleaseMemory();
  } catch (const std::exception&) {
    // The transaction is over either way; a larger cache does no harm.
    return;
  }
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

ReadScope::ReadScope(Connection& connection) : connection_(connection) {
  if (connection_.InTransaction()) return;
  connection_.begin_.Run();
  began_ = true;
}

ReadScope::~ReadScope() {
  if (!began_ || !connection_.IsOpen() || !connection_.InTransaction()) return;
  try {
    connection_.commit_.Run();
  } catch (const std::exception&) {
    // Ending a read changes nothing; the next statement reports what is wrong.
    return;
  }
}

WriteScope::WriteScope(Connection& connection) : connection_(connection) {
  connection_.RequireWritable();
  connection_.RequireIntactWork();
  if (connection_.InTransaction()) return;
  connection_.beginWrite_.Run();
  began_ = true;
}

WriteScope::~WriteScope() {
  if (!began_ || !connection_.IsOpen() || !connection_.InTransaction()) return;
  try {
    connection_.rollback_.Run();
  } catch (const std::exception&) {
    // The storage undoes it when the file is next opened.
    return;
  }
}

void WriteScope::Commit() {
  if (!began_) return;
  connection_.commit_.Run();
  began_ = false;
}

}  // namespace varnlog::dao
