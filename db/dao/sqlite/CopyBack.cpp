#include "db/dao/sqlite/CopyBack.h"

#include <memory>

#include <sqlite3.h>

#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/FileChecks.h"
#include "db/dao/sqlite/Maintenance.h"
#include "platform/SafeFile.h"

namespace varnlog::dao {

namespace fs = std::filesystem;

namespace {

constexpr int kPagesBetweenReports = 16;

struct FinishBackup {
  void operator()(sqlite3_backup* backup) const { sqlite3_backup_finish(backup); }
};

bool Report(const MaintenanceProgress& progress, sqlite3_backup* backup) {
  const double all = sqlite3_backup_pagecount(backup);
  return !progress || all == 0 || progress(1.0 - sqlite3_backup_remaining(backup) / all);
}

// Read through the connection that holds the file's lock: opening the file once more and closing it again
// would give the lock away.
void WriteContent(Connection& file, platform::File& copy) {
  constexpr std::size_t kPortion = std::size_t{1} << 20U;
  std::error_code error;
  const std::int64_t length = file.FileLength();
  for (std::int64_t offset = 0; offset < length && !error;) {
    const std::string bytes = file.ReadBytes(offset, kPortion);
    if (bytes.empty()) error = std::make_error_code(std::errc::io_error);
    copy.WriteAt(static_cast<std::uint64_t>(offset), bytes, error);
    offset += static_cast<std::int64_t>(bytes.size());
  }
  if (error) ThrowFileError(error, file.Path());
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

fs::path KeepCopy(Connection& file, const std::string& suffix) {
  const fs::path path = platform::BehindLinks(platform::ToPath(StoragePath(file.Path())));
  for (int number = 1;; ++number) {
    const fs::path kept = fs::path(path) += suffix + (number == 1 ? "" : std::to_string(number));
    std::error_code error;
    if (fs::exists(fs::symlink_status(kept, error))) continue;
    platform::NewFile copy(kept, error, path);
    if (error) ThrowFileError(error, platform::FromPath(kept));
    WriteContent(file, copy.file());
    error = copy.TakePlace(platform::IfTaken::kFail);
    if (error == std::errc::file_exists) continue;
    if (error) ThrowFileError(error, platform::FromPath(kept));
    return kept;
  }
}

}  // namespace varnlog::dao
