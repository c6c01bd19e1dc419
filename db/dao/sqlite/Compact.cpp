#include <algorithm>
#include <filesystem>

#include <sqlite3.h>

#include "db/dao/sql/JetSql.h"
#include "db/dao/sqlite/CopyBack.h"
#include "db/dao/sqlite/FileChecks.h"
#include "db/dao/sqlite/FileStorage.h"
#include "db/dao/sqlite/Maintenance.h"
#include "db/dao/sqlite/Schema.h"
#include "db/dao/sqlite/TemporaryCopy.h"
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

void VerifyCopy(Connection& source, const RowStamp& before, const std::string& copy,
                const std::shared_ptr<EngineState>& state) {
  Connection made(copy, state);
  made.Open({.exclusive = false, .readOnly = true});
  Statement check(made, "PRAGMA quick_check");
  bool isSound = check.Step() && check.Text(0) == "ok";
  check.Reset();
  // Where others went on writing to the source meanwhile the numbers need not agree.
  if (source.Watch().Current() == before)
    for (const std::string& table : ReadTableNames(source))
      isSound = isSound && RowCount(source, table) == RowCount(made, table);
  if (!isSound) ThrowStorageError(SQLITE_CORRUPT, source.Path(), {});
}

MaintenanceProgress PartOf(const MaintenanceProgress& whole, double begin, double end) {
  if (!whole) return {};
  return [&whole, begin, end](double part) { return whole(begin + (end - begin) * part); };
}

// Writing is needed to undo an interrupted change, but a file on a read-only medium can be copied too.
void OpenForCopy(Connection& source) {
  try {
    source.Open({.exclusive = false, .readOnly = false});
  } catch (const EngineError& error) {
    if (error.number() != ErrorNumber::kNoPermission) throw;
    source.Close();
    source.Open({.exclusive = false, .readOnly = true});
  }
}

}  // namespace

void ThrowFileError(const std::error_code& error, const std::string& path) {
  if (error == std::errc::no_space_on_device) ThrowStorageError(SQLITE_FULL, path, {});
  if (error == std::errc::permission_denied || error == std::errc::read_only_file_system ||
      error == std::errc::operation_not_permitted)
    ThrowStorageError(SQLITE_PERM, path, {});
  ThrowStorageError(SQLITE_IOERR, path, error.message());
}

void CopyCompacted(Connection& source, const std::string& emptyFile, const MaintenanceProgress& progress,
                   const std::shared_ptr<EngineState>& state) {
  const std::string copyPath = StoragePath(emptyFile);
  Statement copy(source, "VACUUM INTO ?1");
  copy.Bind(1, std::string_view(copyPath));
  const CopyProgress reporting(source, emptyFile, progress);
  const RowStamp before = source.Watch().Current();
  copy.Run();
  VerifyCopy(source, before, emptyFile, state);
}

void DBEngine::CompactDatabase(const std::string& source, const std::string& target, int /*options*/,
                               const MaintenanceProgress& progress) {
  RequireFile(source);
  Connection file(source, state_);
  OpenForCopy(file);
  RequireFreePath(target);
  std::error_code error;
  platform::NewFile made(FilePath(target), error, FilePath(source));
  if (error) ThrowFileError(error, target);
  CopyCompacted(file, platform::FromPath(made.path()), progress, state_);
  dao::PutJournalAside(target);
  error = made.TakePlace(platform::IfTaken::kFail);
  if (error) ThrowFileError(error, target);
  if (progress) progress(1.0);
}

// The steps are a copy, the removal of the source, and copying back. The last two are one here: other
// workstations have the source open, so it stays the same file and gets its new content in one transaction.
void DBEngine::CompactInPlace(const std::string& path, const std::string& temporary, int /*options*/,
                              const MaintenanceProgress& progress) {
  constexpr double kCopyingBack = 0.6;
  RequireFile(path);
  Connection source(path, state_);
  source.Open({.exclusive = true, .readOnly = false});
  TemporaryCopy copy(temporary, path);
  CopyCompacted(source, copy.WritePath(), PartOf(progress, 0, kCopyingBack), state_);
  copy.TakeName();
  Connection made(temporary, state_);
  made.Open({.exclusive = false, .readOnly = true});
  if (made.WasReplaced() || !copy.IsOwn())
    throw EngineError(ErrorNumber::kFileExists,
                      FileText("Another file took the name ", temporary, " meanwhile."));
  CopyBack(made, source, PartOf(progress, kCopyingBack, 1.0));
  made.Close();
  if (progress) progress(1.0);
}

void FileStorage::CopyTo(const std::string& target, const MaintenanceProgress& progress) {
  RequireFreePath(target);
  std::error_code error;
  platform::NewFile made(FilePath(target), error, FilePath(Path()));
  if (error) ThrowFileError(error, target);
  const std::string path = platform::FromPath(made.path());
  const RowStamp before = file_.Watch().Current();
  {
    Connection copy(path, State());
    copy.OpenEmpty();
    const ReadScope moment(file_);
    CopyBack(file_, copy, progress);
  }
  VerifyCopy(file_, before, path, State());
  dao::PutJournalAside(target);
  error = made.TakePlace(platform::IfTaken::kFail);
  if (error) ThrowFileError(error, target);
}

std::string FileStorage::CopyInto(const std::string& existing, const MaintenanceProgress& progress) {
  Connection target(existing, State());
  target.Open({.exclusive = true, .readOnly = false});
  const fs::path kept = KeepCopy(target, ".replaced");
  const ReadScope moment(file_);
  CopyBack(file_, target, progress);
  return platform::FromPath(kept);
}

}  // namespace varnlog::dao
