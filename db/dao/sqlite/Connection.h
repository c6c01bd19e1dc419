#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>

#include "db/dao/sqlite/ChangeWatch.h"
#include "db/dao/sqlite/HeldRows.h"
#include "db/dao/sqlite/Statement.h"
#include "db/dao/sqlite/StorageError.h"
#include "db/dao/storage/EngineState.h"

struct sqlite3;
struct sqlite3_stmt;

namespace varnlog::dao {

/// One file as the storage library has it open: its statements, its transactions, and what tells when it has
/// changed. What the engine makes of its content is FileStorage's.
class Connection {
 public:
  struct Access {
    bool exclusive = false;
    bool readOnly = false;
  };

  /// Nothing is open yet.
  Connection(std::string path, std::shared_ptr<EngineState> state);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  /// An existing database; throws as Workspace::OpenDatabase() says.
  void Open(Access access);
  /// A file that is there and empty becomes a database.
  void OpenEmpty();
  /// A database of its own in memory; the path stands in messages only.
  void OpenInMemory();

  [[nodiscard]] bool IsOpen() const noexcept { return handle_ != nullptr; }
  /// Finishes all statements; what is not committed is lost.
  void Close() noexcept;
  /// Throws kObjectInvalid after Close().
  [[nodiscard]] sqlite3* Handle() const;
  [[nodiscard]] const std::string& Path() const { return path_; }
  [[nodiscard]] const std::shared_ptr<EngineState>& State() const { return state_; }
  /// True when the file was renamed or removed, or another one took its name, since it was opened. Every use
  /// of such a connection throws kFileReplaced.
  [[nodiscard]] bool WasReplaced() const;

  /// Throws the engine error of a result code.
  [[noreturn]] void Throw(int result) const;
  /// Runs statements in the storage's SQL.
  void Execute(const std::string& storageSql);
  [[nodiscard]] ChangeWatch& Watch() { return watch_; }

  /// True while any transaction is open, so that reads are consistent and nobody else writes or commits.
  [[nodiscard]] bool InTransaction() const;
  void Begin();
  /// Takes the file's write lock at once, waiting for another's up to the lock retry time.
  void BeginWriting();
  void Commit();
  /// Nothing where no transaction is open.
  void Rollback();
  /// A transaction that could not be ended is ended before the next one begins.
  void LeaveToNext() noexcept { hasLeftOver_ = true; }
  void EndLeftOver();
  /// Writes what an open transaction has changed so far, ahead of its commit.
  void WriteAhead();

  /// Rows of the open transaction that are written before any other statement runs, so that nobody ever sees
  /// that they were not, and before the commit. A transaction that has lost some because they could not be
  /// written is not committed.
  void Hold(std::shared_ptr<HeldRows> rows);
  void WriteHeld();
  [[nodiscard]] std::int64_t HeldCount() const { return held_ == nullptr ? 0 : held_->Count(); }

  /// More memory while much is written.
  void SetCache(bool writing);
  /// Whether a commit waits for the disk.
  void SetSync(bool sync);
  /// As Database::ForgoSafety().
  void ForgoSafety();
  /// Gives cached pages back to the system unless a transaction is open.
  void ReleaseMemory();
  /// Pages found in the cache since it was opened.
  [[nodiscard]] std::int64_t CacheReads() const;

  /// Bytes of the file as they are on the disk; fewer at its end and where they cannot be read.
  [[nodiscard]] std::string ReadBytes(std::int64_t offset, std::size_t count) const;
  [[nodiscard]] std::int64_t FileLength() const;

 private:
  friend class Statement;

  void OpenHandle(int flags);
  void Configure();
  void CheckHeader();
  void TakeForever();
  void RefuseVirtualTables();
  void LeaveSharedMemoryJournal();
  void DropHeld() noexcept;
  static int OnBusy(void* connection, int attempt);

  std::string path_;
  std::shared_ptr<EngineState> state_;
  sqlite3* handle_ = nullptr;
  std::string openedPath_;  // while a file is open
  bool isReadOnly_ = false;
  bool hasLeftOver_ = false;                      // a transaction that could not be ended
  bool isSafe_ = true;                            // until ForgoSafety()
  bool hasLostRows_ = false;                      // this transaction
  std::unordered_set<sqlite3_stmt*> statements_;  // of Statement objects; the storage has some of its own
  std::shared_ptr<HeldRows> held_;
  ChangeWatch watch_;
  Statement begin_;
  Statement beginWrite_;
  Statement commit_;
  Statement rollback_;
};

/// One read transaction over several statements, unless a transaction is open already.
class ReadScope {
 public:
  explicit ReadScope(Connection& connection);
  ~ReadScope();
  ReadScope(const ReadScope&) = delete;
  ReadScope& operator=(const ReadScope&) = delete;

 private:
  Connection& connection_;
  bool began_ = false;
};

}  // namespace varnlog::dao
