#include "db/dao/sqlite/Connection.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <filesystem>
#include <mutex>
#include <set>
#include <utility>

#include <sqlite3.h>

#include "db/dao/OpenFiles.h"
#include "db/dao/sqlite/CountingVfs.h"
#include "db/dao/sqlite/FileChecks.h"
#include "db/dao/sqlite/TextFunctions.h"
#include "platform/Files.h"

namespace varnlog::dao {

namespace {

// While exposures are taken in the touched pages of the indexes stay in memory.
constexpr std::int32_t kWritingBuffer = 64 * 1024;
constexpr std::int32_t kStorageDefaultBuffer = 2000;

// The storage keeps statistics on its memory behind a lock, for which every row would pay. And what a single
// statement may have to undo, a few pages where rules watch over a table, would go through a file each time.
// No limit: as much memory as that allowed would be taken at the first page, of which Windows makes address
// space and gives it back, for every such statement.
void PrepareStorage() {
  constexpr int kUndoneInMemory = -1;
  static const int configured = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0) +
                                sqlite3_config(SQLITE_CONFIG_STMTJRNL_SPILL, kUndoneInMemory);
  static_cast<void>(configured);
}

// The file as the storage has it open. Opening it a second time and closing that would drop the locks of all
// connections of the process on some systems.
sqlite3_file& OpenFile(sqlite3* handle) {
  sqlite3_file* file = nullptr;
  sqlite3_file_control(handle, "main", SQLITE_FCNTL_FILE_POINTER, &file);
  return *file;
}

// The databases that the process has open, by the paths under which the storage knows them.
class OpenFiles {
 public:
  static OpenFiles& Instance() {
    static OpenFiles files;
    return files;
  }
  void Add(const std::string& path) {
    const std::lock_guard guard(mutex_);
    paths_.insert(path);
  }
  void Remove(const std::string& path) {
    const std::lock_guard guard(mutex_);
    if (const auto found = paths_.find(path); found != paths_.end()) paths_.erase(found);
  }
  [[nodiscard]] bool Contains(const std::filesystem::path& file) {
    const std::lock_guard guard(mutex_);
    return std::ranges::any_of(paths_, [&file](const std::string& path) {
      std::error_code error;
      return std::filesystem::equivalent(file, platform::ToPath(path), error);
    });
  }

 private:
  std::mutex mutex_;
  std::multiset<std::string> paths_;
};

}  // namespace

bool IsOpenHere(const std::string& path) {
  return OpenFiles::Instance().Contains(platform::ToPath(StoragePath(path)));
}

Connection::Connection(std::string path, std::shared_ptr<EngineState> state)
    : path_(std::move(path)), state_(std::move(state)), watch_(*this) {}

Connection::~Connection() {
  Close();
}

void Connection::Open(Access access) {
  isReadOnly_ = access.readOnly;
  RequireUsableFile(path_, !isReadOnly_);
  OpenHandle(isReadOnly_ ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE);
  if (!isReadOnly_ && sqlite3_db_readonly(handle_, "main") == 1)
    throw EngineError(ErrorNumber::kNoPermission,
                      FileText("There is no permission to change the file ", path_, "."));
  CheckHeader();
  Configure();
  if (access.exclusive) TakeForever();
  // The first look at the content tells a locked, damaged or foreign file.
  RefuseVirtualTables();
}

void Connection::OpenEmpty() {
  OpenHandle(SQLITE_OPEN_READWRITE);
  Configure();
  Execute(
      "PRAGMA page_size=16384; PRAGMA encoding='UTF-8'; PRAGMA auto_vacuum=NONE;"
      "PRAGMA application_id=0x56524C47");  // "VRLG"
}

void Connection::OpenInMemory() {
  const int result = sqlite3_open_v2(
      ":memory:", &handle_,
      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
  if (result != SQLITE_OK) Throw(result);
  Configure();
}

void Connection::OpenHandle(int flags) {
  PrepareStorage();
  const int result = sqlite3_open_v2(StoragePath(path_).c_str(), &handle_,
                                     flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, CountingVfsName());
  if (result != SQLITE_OK) Throw(result);
  sqlite3_busy_handler(handle_, &Connection::OnBusy, this);
  // The same text even when the current folder changes before it is closed.
  openedPath_ = StoragePath(path_);
  OpenFiles::Instance().Add(openedPath_);
}

void Connection::CheckHeader() {
  const std::string header = ReadBytes(0, kHeaderSize);
  RequireDatabaseHeader(header, path_);
  if (HasSharedMemoryJournal(header)) LeaveSharedMemoryJournal();
}

// What is in a file from elsewhere (triggers, views, functions in its schema) never runs.
void Connection::Configure() {
  for (const auto& [option, value] : {std::pair{SQLITE_DBCONFIG_DEFENSIVE, 1},
                                      {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
                                      {SQLITE_DBCONFIG_DQS_DML, 0},
                                      {SQLITE_DBCONFIG_DQS_DDL, 0},
                                      {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
                                      {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
                                      {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0}})
    sqlite3_db_config(handle_, option, value, nullptr);
  RegisterText(handle_);
  SetCache(false);
  SetSync(state_->options.implicitCommitSync);
  begin_ = Statement(*this, "BEGIN");
  beginWrite_ = Statement(*this, "BEGIN IMMEDIATE");
  commit_ = Statement(*this, "COMMIT");
  rollback_ = Statement(*this, "ROLLBACK");
}

// Their content is whatever a module of the storage makes of other tables, and some modules fail on what a
// file from elsewhere gives them. A log has none.
void Connection::RefuseVirtualTables() {
  Statement find(*this, "SELECT count(*) FROM sqlite_schema WHERE sql LIKE '%virtual%using%'");
  ResetAtEnd reset(find);
  if (find.Step() && find.Number(0) > 0)
    throw EngineError(ErrorNumber::kUnrecognisedFormat,
                      FileText("The file ", path_, " has tables of a kind that is not known here."));
}

void Connection::TakeForever() {
  Execute("PRAGMA locking_mode=EXCLUSIVE");
  if (!isReadOnly_) Execute("BEGIN EXCLUSIVE; COMMIT");
}

// The file layer offers no shared memory, so the file must be held alone before it is read.
void Connection::LeaveSharedMemoryJournal() {
  if (isReadOnly_)
    throw EngineError(ErrorNumber::kNoPermission,
                      FileText("Another program left the file ", path_,
                               " in a state that must be tidied up by opening it for writing."));
  Execute(
      "PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=DELETE; PRAGMA locking_mode=NORMAL;"
      "SELECT count(*) FROM sqlite_schema");
}

void Connection::Close() noexcept {
  if (handle_ == nullptr) return;
  DropHeld();
  state_->closedCacheReads += CacheReads();
  sqlite3* const handle = std::exchange(handle_, nullptr);
  for (sqlite3_stmt* const statement : statements_) sqlite3_finalize(statement);
  statements_.clear();
  sqlite3_close_v2(handle);
  if (!openedPath_.empty()) OpenFiles::Instance().Remove(std::exchange(openedPath_, {}));
}

sqlite3* Connection::Handle() const {
  if (handle_ == nullptr) throw EngineError(ErrorNumber::kObjectInvalid, "The database was closed.");
  return handle_;
}

bool Connection::WasReplaced() const {
  int moved = 0;
  return sqlite3_file_control(Handle(), "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK && moved != 0;
}

void Connection::Throw(int result) const {
  ThrowStorageError(result, path_, sqlite3_errmsg(handle_));
}

void Connection::Execute(const std::string& storageSql) {
  WriteHeld();
  const int result = sqlite3_exec(Handle(), storageSql.c_str(), nullptr, nullptr, nullptr);
  if (result != SQLITE_OK) Throw(result);
}

int Connection::OnBusy(void* connection, int attempt) {
  static thread_local std::chrono::steady_clock::time_point since;
  const auto now = std::chrono::steady_clock::now();
  if (attempt == 0) since = now;
  const EngineOptions& options = static_cast<Connection*>(connection)->state_->options;
  const std::chrono::milliseconds patience(std::int64_t{options.lockRetry} * options.lockDelay);
  if (now - since >= patience) return 0;
  // Short steps at first: most locks are held for milliseconds.
  sqlite3_sleep(std::clamp(1 << std::min(attempt, 6), 1, std::max(1, options.lockDelay)));
  return 1;
}

std::int64_t Connection::FileLength() const {
  sqlite3_file& file = OpenFile(Handle());
  sqlite3_int64 length = 0;
  if (file.pMethods == nullptr || file.pMethods->xFileSize(&file, &length) != SQLITE_OK) return 0;
  return length;
}

std::string Connection::ReadBytes(std::int64_t offset, std::size_t count) const {
  const std::int64_t there = std::max<std::int64_t>(0, FileLength() - offset);
  std::string bytes(std::min(count, static_cast<std::size_t>(there)), '\0');
  if (bytes.empty()) return bytes;
  sqlite3_file& file = OpenFile(handle_);
  if (file.pMethods->xRead(&file, bytes.data(), static_cast<int>(bytes.size()), offset) != SQLITE_OK)
    bytes.clear();
  return bytes;
}

void Connection::SetCache(bool writing) {
  const std::int32_t reading =
      state_->options.bufferSize > 0 ? state_->options.bufferSize : kStorageDefaultBuffer;
  const std::int32_t size = writing ? std::max(reading, kWritingBuffer) : reading;
  Execute("PRAGMA cache_size=-" + std::to_string(size));
}

void Connection::ForgoSafety() {
  isSafe_ = false;
  Execute("PRAGMA journal_mode=MEMORY; PRAGMA synchronous=OFF");
}

void Connection::SetSync(bool sync) {
  if (!isSafe_) return;
  Execute(sync ? "PRAGMA synchronous=EXTRA" : "PRAGMA synchronous=NORMAL");
}

void Connection::ReleaseMemory() {
  if (IsOpen() && !InTransaction()) sqlite3_db_release_memory(handle_);
}

std::int64_t Connection::CacheReads() const {
  int current = 0;
  int highest = 0;
  if (handle_ != nullptr) sqlite3_db_status(handle_, SQLITE_DBSTATUS_CACHE_HIT, &current, &highest, 0);
  return current;
}

bool Connection::InTransaction() const {
  return sqlite3_get_autocommit(Handle()) == 0;
}

void Connection::Begin() {
  begin_.Run();
}

void Connection::BeginWriting() {
  beginWrite_.Run();
}

void Connection::Commit() {
  WriteHeld();
  if (hasLostRows_)
    throw EngineError(ErrorNumber::kInvalidTransaction, "Some rows of the transaction could not be written.");
  commit_.Run();
}

void Connection::Rollback() {
  DropHeld();
  if (InTransaction()) rollback_.Run();
  hasLostRows_ = false;
}

void Connection::Hold(std::shared_ptr<HeldRows> rows) {
  if (held_ != rows) WriteHeld();
  held_ = std::move(rows);
}

void Connection::WriteHeld() {
  if (held_ == nullptr) return;
  const std::shared_ptr<HeldRows> rows = std::exchange(held_, nullptr);
  // What the storage has undone is not written after its end.
  if (!InTransaction()) return rows->Drop();
  try {
    rows->Write();
  } catch (const std::exception&) {
    hasLostRows_ = true;
    throw;
  }
}

void Connection::DropHeld() noexcept {
  if (held_ != nullptr) std::exchange(held_, nullptr)->Drop();
}

// A scope whose end failed (memory ran out) leaves its transaction open. Whoever took that for one around him
// would never commit.
void Connection::EndLeftOver() {
  if (hasLeftOver_) Rollback();
  hasLeftOver_ = false;
}

void Connection::WriteAhead() {
  if (isReadOnly_ || !InTransaction()) return;
  WriteHeld();
  const int result = sqlite3_db_cacheflush(handle_);
  if (result != SQLITE_OK) Throw(result);
}

ReadScope::ReadScope(Connection& connection) : connection_(connection) {
  connection_.EndLeftOver();
  if (connection_.InTransaction()) return;
  connection_.Begin();
  began_ = true;
}

ReadScope::~ReadScope() {
  if (!began_ || !connection_.IsOpen() || !connection_.InTransaction()) return;
  try {
    connection_.Commit();
  } catch (const std::exception&) {
    connection_.LeaveToNext();
  }
}

}  // namespace varnlog::dao
