#include <exception>

#include "db/dao/sqlite/FileStorage.h"

namespace varnlog::dao {

void FileStorage::BeginWork() {
  if (inWork_) throw EngineError(ErrorNumber::kInvalidTransaction, "A transaction is already open.");
  file_.EndLeftOver();
  file_.SetCache(true);
  file_.SetSync(State()->options.userCommitSync);
  try {
    if (IsReadOnly())
      file_.Begin();
    else
      file_.BeginWriting();
  } catch (const std::exception&) {
    EndWork();
    throw;
  }
  inWork_ = true;
}

void FileStorage::CommitWork() {
  try {
    RequireIntactWork();
    TellCommitting();
    file_.Commit();
  } catch (const std::exception&) {
    RollbackWork();
    throw;
  }
  EndWork();
}

void FileStorage::RollbackWork() {
  file_.Rollback();
  EndWork();
}

// Whatever was read inside the transaction may be undone, and the storage does not count that as a change.
void FileStorage::EndWork() noexcept {
  inWork_ = false;
  file_.Watch().Forget();
  TellEnded();
  try {
    file_.SetCache(false);
    file_.SetSync(State()->options.implicitCommitSync);
    file_.ReleaseMemory();
  } catch (const std::exception&) {
    // The transaction is over either way; a larger cache does no harm.
    return;
  }
}

void FileStorage::RequireIntactWork() const {
  if (inWork_ && !file_.InTransaction())
    throw EngineError(ErrorNumber::kInvalidTransaction,
                      "The transaction had to be undone after a failure; nothing more is written in it.");
}

bool FileStorage::BeginChange() {
  RequireWritable();
  RequireIntactWork();
  file_.EndLeftOver();
  if (file_.InTransaction()) return false;
  file_.BeginWriting();
  return true;
}

void FileStorage::CommitChange() {
  TellCommitting();
  file_.Commit();
  TellEnded();
}

void FileStorage::UndoChange() noexcept {
  if (!IsOpen()) return;
  TellEnded();
  try {
    file_.Rollback();
  } catch (const std::exception&) {
    file_.LeaveToNext();
  }
}

void FileStorage::LetRowsWait(bool may) {
  mayRowsWait_ = may;
  if (!may) file_.WriteHeld();
}

void FileStorage::BeginPart() {
  file_.Execute("SAVEPOINT part");
}

void FileStorage::KeepPart() {
  file_.Execute("RELEASE part");
}

void FileStorage::UndoPart() noexcept {
  if (!IsOpen() || !file_.InTransaction()) return;
  // The storage does not count what it undoes as a change.
  file_.Watch().Forget();
  try {
    file_.Execute("ROLLBACK TO part; RELEASE part");
  } catch (const EngineError&) {
    // Then the storage has undone the whole transaction.
    return;
  }
}

}  // namespace varnlog::dao
