#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>

#include "db/dao/rows/RowStore.h"
#include "db/dao/sqlite/Statement.h"
#include "db/dao/sqlite/StorageError.h"
#include "db/dao/storage/Storage.h"

struct sqlite3;
struct sqlite3_stmt;

namespace varnlog::dao {

class DistinctRows;
class OrderedIds;
class SelectCache;

/// One open file.
class Connection final : public Storage {
 public:
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
  ~Connection() override;

  [[nodiscard]] bool IsOpen() const noexcept override { return handle_ != nullptr; }
  /// Finishes all statements; what is not committed is lost.
  void Close() noexcept override;
  /// Throws kObjectInvalid after Close().
  [[nodiscard]] sqlite3* Handle() const;

  /// True when the file was renamed or removed, or another one took its name, since it was opened. Every use
  /// of such a connection throws kFileReplaced.
  [[nodiscard]] bool WasReplaced() const override;

  /// Throws the engine error of a result code.
  [[noreturn]] void Throw(int result) const;

  /// Runs statements in the storage's SQL.
  void Execute(const std::string& storageSql);

  [[nodiscard]] std::vector<std::string> TableNames() override;
  [[nodiscard]] std::shared_ptr<const TableSchema> Table(std::string_view name) override;
  void AppendTable(std::string_view name, std::span<const FieldDef> fields) override;
  void AppendIndex(std::string_view table, const Index& index) override;
  void AppendField(std::string_view table, const FieldDef& field) override;
  void RunStorageSql(std::string_view storageSql) override;

  [[nodiscard]] std::unique_ptr<Recordset> OpenTable(std::string_view table) override;
  [[nodiscard]] std::unique_ptr<Recordset> OpenSelect(std::string_view source, bool isTable,
                                                      std::optional<RecordsetType> type) override;
  [[nodiscard]] std::unique_ptr<BulkRows> OpenBulkRows(std::string_view table) override;
  [[nodiscard]] std::unique_ptr<TableScan> Scan(std::string_view table, std::span<const std::string> fields,
                                                const ScanRange& range) override;
  [[nodiscard]] std::unique_ptr<ValueIndex> IndexValues(std::string_view table,
                                                        std::span<const IndexedColumn> columns) override;
  [[nodiscard]] std::int64_t Greatest(std::string_view table, std::string_view field) override;
  [[nodiscard]] std::vector<IdRange> UnusedIds(std::string_view table) override;

  void BeginWork() override;
  void CommitWork() override;
  void RollbackWork() override;
  [[nodiscard]] bool InWork() const override { return inWork_; }
  [[nodiscard]] bool BeginChange() override;
  void CommitChange() override;
  void UndoChange() noexcept override;
  void BeginPart() override;
  void KeepPart() override;
  void UndoPart() noexcept override;

  [[nodiscard]] bool HasRules(std::span<const std::string> rules) override;
  void SetRules(std::span<const std::string> rules) override;
  [[nodiscard]] bool AreRulesObeyed() override;
  void SetRulesObeyed(bool obeyed) override;

  [[nodiscard]] std::vector<std::string> Check() override;
  void CopyTo(const std::string& target, const MaintenanceProgress& progress) override;
  [[nodiscard]] std::string CopyInto(const std::string& existing,
                                     const MaintenanceProgress& progress) override;

  /// True while any transaction is open, so that reads are consistent and nobody else writes or commits.
  [[nodiscard]] bool InTransaction() const;
  /// kInvalidTransaction when the storage had to undo the program's transaction (a full disk), so that
  /// nothing is written half outside it.
  void RequireIntactWork() const;

  /// Costs one small read of the file and takes no lock.
  [[nodiscard]] RowStamp CurrentStamp();
  /// The same for one of many rows that are shown together: others' changes are looked for only if that was
  /// not done within the last few microseconds, less than a change takes.
  [[nodiscard]] RowStamp RecentStamp();
  /// Another one after every transaction of the program.
  [[nodiscard]] std::int64_t Epoch() const { return epoch_; }
  /// Rows changed through this connection, rolled back or not.
  [[nodiscard]] std::int64_t OwnChanges() const;
  /// Changes exactly when another connection has changed the file.
  [[nodiscard]] std::int64_t OthersVersion();
  /// Makes every CurrentStamp() from now on differ from the earlier ones.
  void ForgetRows() { ++epoch_; }

  void ForgetSchema();

  [[nodiscard]] SelectCache& Selects() { return *selects_; }
  [[nodiscard]] DistinctRows& Distinct() { return *distinct_; }
  [[nodiscard]] OrderedIds& Ordered() { return *ordered_; }

  void ForgoSafety() override;
  void ApplyOptions() override;
  void Refresh() override;
  /// Bytes of the file as they are on the disk; fewer at its end and where they cannot be read.
  [[nodiscard]] std::string ReadBytes(std::int64_t offset, std::size_t count) const;
  [[nodiscard]] std::int64_t FileLength() const;
  [[nodiscard]] std::int64_t CacheReads() const override;

 private:
  friend class ReadScope;
  friend class Statement;

  Connection(std::string path, Mode mode, std::shared_ptr<EngineState> state);
  void OpenHandle(int flags);
  void ChangeDefinitions(const std::string& storageSql);
  void Configure();
  void CheckHeader();
  void Probe(bool exclusive);
  void RefuseVirtualTables();
  void TakeForever();
  void LeaveSharedMemoryJournal();
  void SetCache(bool writing);
  void SetSync(bool sync);
  void EndLeftOver();
  void EndWork() noexcept;
  /// Writes what an open transaction has changed so far, ahead of its commit.
  void WriteAhead();
  /// Gives cached pages back to the system unless a transaction is open.
  void ReleaseMemory();
  [[nodiscard]] std::shared_ptr<Connection> Self() {
    return std::static_pointer_cast<Connection>(shared_from_this());
  }
  static int OnBusy(void* connection, int attempt);

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
  Statement begin_;
  Statement beginWrite_;
  Statement commit_;
  Statement rollback_;
  Statement othersVersion_;
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
