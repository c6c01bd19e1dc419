#include "db/dao/sqlite/CopyBack.h"

#include <memory>

#include <sqlite3.h>

#include "db/dao/sqlite/Connection.h"

namespace varnlog::dao {

namespace {

constexpr int kPagesBetweenReports = 16;

struct FinishBackup {
  void operator()(sqlite3_backup* backup) const { sqlite3_backup_finish(backup); }
};

bool Report(const MaintenanceProgress& progress, sqlite3_backup* backup) {
  const double all = sqlite3_backup_pagecount(backup);
  return !progress || all == 0 || progress(1.0 - sqlite3_backup_remaining(backup) / all);
}

}  // namespace

void CopyBack(Connection& made, Connection& target, const MaintenanceProgress& progress) {
  // What is not finished is undone when the storage lets go of it.
  std::unique_ptr<sqlite3_backup, FinishBackup> backup(
      sqlite3_backup_init(target.Handle(), "main", made.Handle(), "main"));
  if (backup == nullptr) target.Throw(sqlite3_extended_errcode(target.Handle()));
  int result = SQLITE_OK;
  while ((result = sqlite3_backup_step(backup.get(), kPagesBetweenReports)) == SQLITE_OK)
    if (!Report(progress, backup.get()))
      throw EngineError(ErrorNumber::kCancelled, "The operation was cancelled.");
  const int finished = sqlite3_backup_finish(backup.release());
  if (result != SQLITE_DONE) target.Throw(result);
  if (finished != SQLITE_OK) target.Throw(finished);
}

}  // namespace varnlog::dao
