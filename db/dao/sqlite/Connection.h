#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>

#include "db/dao/EngineState.h"
#include "db/dao/sqlite/Statement.h"
#include "db/dao/sqlite/StorageError.h"

struct sqlite3;
struct sqlite3_stmt;

namespace varnlog::dao {

struct TableSchema;
class ChangeJournal;
class DistinctRows;
class OrderedIds;
class SelectCache;

/// One open file. Database, record sets and statements share it; Close() ends all of them.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  struct Mode {
    bool exclusive = false;
    bool readOnly = false;
  };

  /// Opens an existing file; throws as Workspace::OpenDatabase() says.
  [[nodiscard]] static std::shared_ptr<Connection> Open(const std::string& path, Mode mode,
                                                        const std::shared_ptr<EngineState>& state);
  /// Makes an empty database; throws kFileExists.
  [[nodiscard]] static std::shared_ptr<Connection> Create(const std::string& path,
                                                          const std::shared_ptr<EngineState>& state);
  /// The same in a file that the caller has made and that is empty.
  [[nodiscard]] static std::shared_ptr<Connection> CreateIn(const std::string& emptyFile,
                                                            const std::shared_ptr<EngineState>& state);
  /// An empty database in memory with the text functions, for what is computed from `source`.
  [[nodiscard]] static std::shared_ptr<Connection> InMemory(const Connection& source);
  /// The same for the content of the file `path`. `mode` restricts record sets and definitions only.
  [[nodiscard]] static std::shared_ptr<Connection> InMemory(const std::string& path, Mode mode,
                                                            const std::shared_ptr<EngineState>& state);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  [[nodiscard]] const std::string& Path() const { return path_; }
  [[nodiscard]] bool IsReadOnly() const { return mode_.readOnly; }
  [[nodiscard]] const std::shared_ptr<EngineState>& State() const { return state_; }
  /// kReadOnlyDatabase when the file was opened for reading.
  void RequireWritable() const;

  [[nodiscard]] bool IsOpen() const noexcept { return handle_ != nullptr; }
  /// Finishes all statements; what is not committed is lost.
  void Close() noexcept;
  /// Throws kObjectInvalid after Close().
  [[nodiscard]] sqlite3* Handle() const;

  /// True when the file was renamed or removed, or another one took its name, since it was opened. Every use
  /// of such a connection throws kFileReplaced.
  [[nodiscard]] bool WasReplaced() const;

  /// Throws the engine error of a result code.
  [[noreturn]] void Throw(int result) const;

  /// Runs statements in the storage's SQL.
  void Execute(const std::string& storageSql);

  /// As Database::SetJournal(); nullptr for none.
  void SetJournal(std::shared_ptr<ChangeJournal> journal) { journal_ = std::move(journal); }
  [[nodiscard]] ChangeJournal* Journal() const { return journal_.get(); }

  // A transaction asked for by the program.
  void BeginWork();
  /// After a failure the transaction is undone.
  void CommitWork();
  void RollbackWork();
  /// True between BeginWork() and the end of that transaction, whether or not the storage had to undo it.
  [[nodiscard]] bool InWork() const { return inWork_; }
  /// True while any transaction is open, so that reads are consistent and nobody else writes or commits.
  [[nodiscard]] bool InTransaction() const;
  /// kInvalidTransaction when the storage had to undo the program's transaction (a full disk), so that
  /// nothing is written half outside it.
  void RequireIntactWork() const;

  /// Compared to find out whether rows that were read may have changed since, by whomever.
  struct Stamp {
    std::uint32_t fileChanges = 0;
    std::int64_t ownChanges = 0;
    std::int64_t epoch = 0;
    friend bool operator==(const Stamp&, const Stamp&) = default;
  };
  /// Costs one small read of the file and takes no lock.
  [[nodiscard]] Stamp CurrentStamp();
  /// The same for one of many rows that are shown together: others' changes are looked for only if that was
  /// not done within the last few microseconds, less than a change takes.
  [[nodiscard]] Stamp RecentStamp();
  /// Another one after every transaction of the program.
  [[nodiscard]] std::int64_t Epoch() const { return epoch_; }
  /// Rows changed through this connection, rolled back or not.
  [[nodiscard]] std::int64_t OwnChanges() const;
  /// Changes exactly when another connection has changed the file.
  [[nodiscard]] std::int64_t OthersVersion();
  /// Makes every CurrentStamp() from now on differ from the earlier ones.
  void ForgetRows() { ++epoch_; }

  /// The definition of a table, letter case of its name ignored; throws kTableNotFound. Read once and kept
  /// until ForgetSchema().
  [[nodiscard]] std::shared_ptr<const TableSchema> Table(std::string_view name);
  void ForgetSchema();

  [[nodiscard]] SelectCache& Selects() { return *selects_; }
  [[nodiscard]] DistinctRows& Distinct() { return *distinct_; }
  [[nodiscard]] OrderedIds& Ordered() { return *ordered_; }

  /// As Database::ForgoSafety().
  void ForgoSafety();

  /// Applies the engine's options after they changed.
  void ApplyOptions();
  /// Writes what an open transaction has changed so far, ahead of its commit.
  void WriteAhead();
  /// Bytes of the file as they are on the disk; fewer at its end and where they cannot be read.
  [[nodiscard]] std::string ReadBytes(std::int64_t offset, std::size_t count) const;
  [[nodiscard]] std::int64_t FileLength() const;
  /// Gives cached pages back to the system unless a transaction is open.
  void ReleaseMemory();
  /// Pages found in the cache since the file was opened.
  [[nodiscard]] std::int64_t CacheReads() const;

 private:
  friend class ReadScope;
  friend class Statement;
  friend class WriteScope;

  Connection(std::string path, Mode mode, std::shared_ptr<EngineState> state);
  void OpenHandle(int flags);
  void Configure();
  void CheckHeader();
  void Probe();
  void RefuseVirtualTables();
  void TakeForever();
  void LeaveSharedMemoryJournal();
  void SetCache(bool writing);
  void SetSync(bool sync);
  void EndLeftOver();
  void EndWork() noexcept;
  void TellCommitting();
  void TellEnded() noexcept;
  static int OnBusy(void* connection, int attempt);

  std::string path_;
  Mode mode_;
  std::shared_ptr<EngineState> state_;
  sqlite3* handle_ = nullptr;
  bool inWork_ = false;
  bool hasLeftOver_ = false;  // a transaction that could not be ended
  bool isSafe_ = true;        // until ForgoSafety()
  std::int64_t epoch_ = 0;
  std::uint32_t fileChanges_ = 0;
  std::chrono::steady_clock::time_point fileChangesRead_;
  std::unordered_set<sqlite3_stmt*> statements_;  // of Statement objects; the storage has some of its own
  std::map<std::string, std::shared_ptr<const TableSchema>> tables_;
  std::unique_ptr<SelectCache> selects_;
  std::unique_ptr<DistinctRows> distinct_;
  std::unique_ptr<OrderedIds> ordered_;
  std::shared_ptr<ChangeJournal> journal_;
  Statement begin_;
  Statement beginWrite_;
  Statement commit_;
  Statement rollback_;
  Statement othersVersion_;
};

/// One of several changes within a transaction: undone by itself unless Keep() was called.
class ChangeScope {
 public:
  explicit ChangeScope(Connection& connection);
  ~ChangeScope();
  ChangeScope(const ChangeScope&) = delete;
  ChangeScope& operator=(const ChangeScope&) = delete;
  void Keep();

 private:
  Connection& connection_;
  bool isOpen_ = true;
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

/// A write transaction of the engine's own around one change, unless one is open already. Undone unless
/// Commit() was called.
class WriteScope {
 public:
  explicit WriteScope(Connection& connection);
  ~WriteScope();
  WriteScope(const WriteScope&) = delete;
  WriteScope& operator=(const WriteScope&) = delete;
  void Commit();

 private:
  Connection& connection_;
  bool began_ = false;
};

}  // namespace varnlog::dao
