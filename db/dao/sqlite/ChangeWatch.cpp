#include "db/dao/sqlite/ChangeWatch.h"

#include <sqlite3.h>

#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/FileChecks.h"

namespace varnlog::dao {

RowStamp ChangeWatch::Current() {
  sqlite3_file* file = nullptr;
  sqlite3_file_control(file_.Handle(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
  // A database in memory has no file that others could change.
  if (file->pMethods != nullptr)
    file->pMethods->xRead(file, &fileChanges_, sizeof fileChanges_, kChangeCounterOffset);
  fileChangesRead_ = std::chrono::steady_clock::now();
  return {fileChanges_, OwnChanges(), epoch_};
}

RowStamp ChangeWatch::Recent() {
  constexpr std::chrono::microseconds kRecent(50);
  if (std::chrono::steady_clock::now() - fileChangesRead_ > kRecent) return Current();
  return {fileChanges_, OwnChanges(), epoch_};
}

std::int64_t ChangeWatch::OwnChanges() const {
  return sqlite3_total_changes64(file_.Handle()) + file_.HeldCount();
}

std::int64_t ChangeWatch::OthersVersion() {
  if (!othersVersion_.IsPrepared()) othersVersion_ = Statement(file_, "PRAGMA data_version");
  ResetAtEnd reset(othersVersion_);
  return othersVersion_.Step() ? othersVersion_.Number(0) : 0;
}

}  // namespace varnlog::dao
