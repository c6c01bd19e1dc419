#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "db/dao/DBEngine.h"
#include "db/dao/ServerState.h"
#include "db/dao/storage/EngineState.h"
#include "db/dao/storage/TableSchema.h"

namespace varnlog::dao {

/// What stands behind a Database, in a file (sqlite/) or on a server (postgres/). All Database objects,
/// record sets and scans of one opening share it; Close() ends all of them.
///
/// A storage keeps the promises that Database and Recordset make, with the same values, the same order of
/// texts and rows and the same error numbers as any other. It is used from one thread. Every function may
/// throw EngineError; after Close() it is kObjectInvalid. What each of the functions below does not say
/// stands at the function of that name of Database.
class Storage : public std::enable_shared_from_this<Storage> {
 public:
  struct Mode {
    bool exclusive = false;
    bool readOnly = false;
  };

  Storage(std::string path, Mode mode, std::shared_ptr<EngineState> state)
      : path_(std::move(path)), mode_(mode), state_(std::move(state)) {}
  virtual ~Storage() = default;
  Storage(const Storage&) = delete;
  Storage& operator=(const Storage&) = delete;

  /// The file that was opened: the log itself or the link to it.
  [[nodiscard]] const std::string& Path() const { return path_; }
  [[nodiscard]] bool IsReadOnly() const { return mode_.readOnly; }
  /// kReadOnlyDatabase when it was opened for reading.
  void RequireWritable() const;
  /// For one that was filled before anybody else sees it.
  void MakeReadOnly() { mode_.readOnly = true; }
  [[nodiscard]] const std::shared_ptr<EngineState>& State() const { return state_; }

  [[nodiscard]] virtual bool IsOpen() const noexcept = 0;
  /// What is not committed is lost.
  virtual void Close() noexcept = 0;
  [[nodiscard]] virtual bool WasReplaced() const = 0;
  [[nodiscard]] virtual std::optional<ServerState> Server() { return std::nullopt; }

  // Definitions. They are read when they are asked for first and kept until they are changed here.
  [[nodiscard]] virtual std::vector<std::string> TableNames() = 0;
  /// Letter case is ignored; throws kTableNotFound.
  [[nodiscard]] virtual std::shared_ptr<const TableSchema> Table(std::string_view name) = 0;
  virtual void AppendTable(std::string_view name, std::span<const FieldDef> fields) = 0;
  virtual void AppendIndex(std::string_view table, const Index& index) = 0;
  /// The field is one that TableDef::Append() allows.
  virtual void AppendField(std::string_view table, const FieldDef& field) = 0;
  virtual void RunStorageSql(std::string_view storageSql) = 0;

  // Rows.
  [[nodiscard]] virtual std::unique_ptr<Recordset> OpenTable(std::string_view table) = 0;
  /// A statement, or all rows of a table where `isTable`; nothing for the type that fits it best.
  [[nodiscard]] virtual std::unique_ptr<Recordset> OpenSelect(std::string_view source, bool isTable,
                                                              std::optional<RecordsetType> type) = 0;
  [[nodiscard]] virtual std::unique_ptr<BulkRows> OpenBulkRows(std::string_view table) = 0;
  [[nodiscard]] virtual std::unique_ptr<TableScan> Scan(std::string_view table,
                                                        std::span<const std::string> fields,
                                                        const ScanRange& range) = 0;
  [[nodiscard]] virtual std::unique_ptr<ValueIndex> IndexValues(std::string_view table,
                                                                std::span<const IndexedColumn> columns) = 0;
  [[nodiscard]] virtual std::int64_t Greatest(std::string_view table, std::string_view field) = 0;
  [[nodiscard]] virtual std::vector<IdRange> UnusedIds(std::string_view table) = 0;
  [[nodiscard]] virtual RowStamp Stamp() = 0;

  // The transaction that the program asks for. It takes the one right to write at once, waiting for another
  // workstation's up to the lock retry time (kFileInUse), and gives a consistent view until its end.
  virtual void BeginWork() = 0;
  /// Tells the journal first. After a failure the transaction is undone; kOutcomeUnknown where that cannot be
  /// found out.
  virtual void CommitWork() = 0;
  virtual void RollbackWork() = 0;
  /// From BeginWork() to the end of that transaction, whether or not the storage had to undo it.
  [[nodiscard]] virtual bool InWork() const = 0;

  // A transaction of the engine's own around one change. False, and nothing is begun, when one is open
  // already; kInvalidTransaction when that one had to be undone. See WriteScope.
  [[nodiscard]] virtual bool BeginChange() = 0;
  virtual void CommitChange() = 0;
  virtual void UndoChange() noexcept = 0;
  // A part of a transaction that can be undone by itself. See ChangeScope.
  virtual void BeginPart() = 0;
  virtual void KeepPart() = 0;
  virtual void UndoPart() noexcept = 0;

  void SetJournal(std::shared_ptr<ChangeJournal> journal) { journal_ = std::move(journal); }
  [[nodiscard]] ChangeJournal* Journal() const { return journal_.get(); }

  // Rules. A storage that enforces rules of its own says that it has them, whatever is asked for.
  [[nodiscard]] virtual bool HasRules(std::span<const std::string> rules) = 0;
  virtual void SetRules(std::span<const std::string> rules) = 0;
  [[nodiscard]] virtual bool AreRulesObeyed() = 0;
  virtual void SetRulesObeyed(bool obeyed) = 0;
  /// Whether rows that are added within the program's transaction may be written some at a time: a failure
  /// may then be told later, at the latest by the call that ends it, and the transaction is not committed.
  virtual void LetRowsWait(bool /*may*/) {}

  // Upkeep.
  [[nodiscard]] virtual std::vector<std::string> Check() = 0;
  virtual void CopyTo(const std::string& target, const MaintenanceProgress& progress) = 0;
  [[nodiscard]] virtual std::string CopyInto(const std::string& existing,
                                             const MaintenanceProgress& progress) = 0;
  virtual void ForgoSafety() = 0;
  /// Applies the engine's options after they changed.
  virtual void ApplyOptions() = 0;
  /// As DBEngine::Idle().
  virtual void Refresh() = 0;
  /// Pages found in a cache since it was opened.
  [[nodiscard]] virtual std::int64_t CacheReads() const = 0;

 protected:
  void TellCommitting();
  void TellEnded() noexcept;
  void ForgetJournal() noexcept { journal_.reset(); }

 private:
  std::string path_;
  Mode mode_;
  std::shared_ptr<EngineState> state_;
  std::shared_ptr<ChangeJournal> journal_;
};

/// Opens whatever stands under the path: a file's content or the log that a link file names. Throws as
/// Workspace::OpenDatabase() says.
[[nodiscard]] std::shared_ptr<Storage> OpenStorage(const std::string& path, Storage::Mode mode,
                                                   const std::shared_ptr<EngineState>& state);

/// A write transaction of the engine's own around one change, unless one is open already. Undone unless
/// Commit() was called.
class WriteScope {
 public:
  explicit WriteScope(Storage& storage) : storage_(storage), began_(storage.BeginChange()) {}
  ~WriteScope() {
    if (began_) storage_.UndoChange();
  }
  WriteScope(const WriteScope&) = delete;
  WriteScope& operator=(const WriteScope&) = delete;
  void Commit() {
    if (!began_) return;
    storage_.CommitChange();
    began_ = false;
  }

 private:
  Storage& storage_;
  bool began_ = false;
};

/// One of several changes within a transaction: undone by itself unless Keep() was called.
class ChangeScope {
 public:
  explicit ChangeScope(Storage& storage) : storage_(storage) { storage_.BeginPart(); }
  ~ChangeScope() {
    if (isOpen_) storage_.UndoPart();
  }
  ChangeScope(const ChangeScope&) = delete;
  ChangeScope& operator=(const ChangeScope&) = delete;
  void Keep() {
    storage_.KeepPart();
    isOpen_ = false;
  }

 private:
  Storage& storage_;
  bool isOpen_ = true;
};

}  // namespace varnlog::dao
