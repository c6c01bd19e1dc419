#include <algorithm>
#include <filesystem>

#include <sqlite3.h>

#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/FileChecks.h"
#include "db/dao/sqlite/Maintenance.h"
#include "db/dao/sqlite/Schema.h"
#include "platform/SafeFile.h"

namespace varnlog::dao {

namespace {

namespace fs = std::filesystem;

fs::path FilePath(const std::string& path) {
  return platform::ToPath(StoragePath(path));
}

// Reports how far the copy has grown while the storage works, and stops it when told to.
class CopyProgress {
 public:
  CopyProgress(Connection& source, const std::string& copy, const MaintenanceProgress& progress)
      : source_(source), copy_(FilePath(copy)), progress_(progress) {
    if (!progress_) return;
    if (!progress_(0)) throw EngineError(ErrorNumber::kCancelled, "The operation was cancelled.");
    Statement size(source_,
                   "SELECT (page_count - freelist_count) * page_size "
                   "FROM pragma_page_count, pragma_freelist_count, pragma_page_size");
    if (size.Step()) expected_ = static_cast<double>(size.Number(0));
    size.Reset();
    sqlite3_progress_handler(source_.Handle(), kStepsBetweenReports, &CopyProgress::Report, this);
  }
  ~CopyProgress() {
    if (progress_ && source_.IsOpen()) sqlite3_progress_handler(source_.Handle(), 0, nullptr, nullptr);
  }
  CopyProgress(const CopyProgress&) = delete;
  CopyProgress& operator=(const CopyProgress&) = delete;

 private:
  static constexpr int kStepsBetweenReports = 20000;
  // The copy is verified afterwards.
  static constexpr double kCopyingShare = 0.9;

  static int Report(void* self) {
    const auto& progress = *static_cast<CopyProgress*>(self);
    const auto size = platform::FileSize(progress.copy_).value_or(0);
    const double part = progress.expected_ > 0 ? static_cast<double>(size) / progress.expected_ : 0;
    return progress.progress_(kCopyingShare * std::min(1.0, part)) ? 0 : 1;
  }

  Connection& source_;
  fs::path copy_;
  const MaintenanceProgress& progress_;
  double expected_ = 0;
};

std::int64_t RowCount(Connection& connection, const std::string& table) {
  Statement count(connection, "SELECT count(*) FROM " + QuoteIdentifier(table));
  ResetAtEnd reset(count);
  return count.Step() ? count.Number(0) : 0;
}

void VerifyCopy(Connection& source, const Connection::Stamp& before, const std::string& copy,
                const std::shared_ptr<EngineState>& state) {
  const auto made = Connection::Open(copy, {.exclusive = false, .readOnly = true}, state);
  Statement check(*made, "PRAGMA quick_check");
  bool isSound = check.Step() && check.Text(0) == "ok";
  check.Reset();
  // Where others went on writing to the source meanwhile the numbers need not agree.
  if (source.CurrentStamp() == before)
    for (const std::string& table : ReadTableNames(source))
      isSound = isSound && RowCount(source, table) == RowCount(*made, table);
  if (!isSound) ThrowStorageError(SQLITE_CORRUPT, source.Path(), {});
}

void FlushFile(const std::string& path) {
  std::error_code error;
  platform::File file = platform::File::Open(FilePath(path), platform::File::Mode::kReadWrite, error);
  if (!error) file.Flush(error);
  if (error) ThrowFileError(error, path);
}

}  // namespace

void ThrowFileError(const std::error_code& error, const std::string& path) {
  if (error == std::errc::no_space_on_device) ThrowStorageError(SQLITE_FULL, path, {});
  if (error == std::errc::permission_denied || error == std::errc::read_only_file_system ||
      error == std::errc::operation_not_permitted)
    ThrowStorageError(SQLITE_PERM, path, {});
  ThrowStorageError(SQLITE_IOERR, path, error.message());
}

void ReplaceDatabaseFile(const std::string& made, const std::string& target) {
  std::error_code error;
  // A name that only points to the file goes on pointing to it.
  const fs::path resolved = fs::weakly_canonical(FilePath(target), error);
  const fs::path place = error ? FilePath(target) : resolved;
  const fs::file_status old = fs::status(place, error);
  error.clear();
  // Who could use the old file can use the new one.
  if (fs::exists(old)) fs::permissions(FilePath(made), old.permissions(), error);
  if (!error) error = platform::RenameFile(FilePath(made), place, platform::IfTaken::kReplace);
  if (error == std::errc::cross_device_link) {
    error = platform::CopyWholeFile(FilePath(made), place, platform::IfTaken::kReplace, place);
    if (!error) RemoveDatabaseFile(made);
  }
  if (error) ThrowFileError(error, target);
}

void RemoveDatabaseFile(const std::string& path) noexcept {
  static_cast<void>(platform::RemoveFile(FilePath(path), {"-journal"}));
}

void CopyCompacted(Connection& source, const std::string& target, const MaintenanceProgress& progress,
                   const std::shared_ptr<EngineState>& state) {
  // Nothing stands under the target's own name before it is complete.
  const std::string unfinished = target + ".part";
  RemoveDatabaseFile(unfinished);
  try {
    const std::string copyPath = StoragePath(unfinished);
    Statement copy(source, "VACUUM INTO ?1");
    copy.Bind(1, std::string_view(copyPath));
    CopyProgress reporting(source, unfinished, progress);
    const Connection::Stamp before = source.CurrentStamp();
    copy.Run();
    VerifyCopy(source, before, unfinished, state);
    FlushFile(unfinished);
    ReplaceDatabaseFile(unfinished, target);
  } catch (const EngineError&) {
    RemoveDatabaseFile(unfinished);
    throw;
  }
  if (progress) progress(1.0);
}

void DBEngine::CompactInPlace(const std::string& path, const std::string& temporary, int /*options*/,
                              const MaintenanceProgress& progress) {
  const auto connection = Connection::Open(path, {.exclusive = true, .readOnly = false}, state_);
  RequireFreePath(temporary);
  try {
    CopyCompacted(*connection, temporary, progress, state_);
    // One step puts the new file in the old one's place, so that there is no moment without the file.
    ReplaceDatabaseFile(temporary, path);
  } catch (const EngineError&) {
    RemoveDatabaseFile(temporary);
    throw;
  }
}

}  // namespace varnlog::dao
