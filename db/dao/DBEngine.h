#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "db/dao/EngineError.h"
#include "db/dao/ForeignFormat.h"
#include "db/dao/Recordset.h"
#include "db/dao/RepairReport.h"
#include "db/dao/RowStamp.h"
#include "db/dao/TableDef.h"

namespace varnlog::dao {

class BulkRows;
class ChangeJournal;
class Storage;     // what stands behind one opening; private to this folder
class WriteScope;  // likewise
class TableScan;
class ValueIndex;
struct IndexedColumn;
struct ScanRange;
struct ServerState;
struct EngineState;  // options and statistics; private to this folder

/// Changes of one database that are made together or not at all; within an open transaction, with that. Takes
/// the write lock at once. Undone unless Commit() was called.
class ChangeGroup {
 public:
  explicit ChangeGroup(std::shared_ptr<Storage> storage);
  ~ChangeGroup();
  ChangeGroup(ChangeGroup&&) noexcept;
  void Commit();

 private:
  std::shared_ptr<Storage> storage_;
  std::unique_ptr<WriteScope> scope_;
};

/// While it lives the file's rules do not hold for this open file, and rows that are added within a
/// transaction are written some at a time: that one cannot be written may be told late, but always before the
/// commit. Where it begins and ends, prepared statements are prepared anew, so it is for long runs.
class RulesSuspension {
 public:
  explicit RulesSuspension(std::shared_ptr<Storage> storage);
  ~RulesSuspension();
  RulesSuspension(const RulesSuspension&) = delete;
  RulesSuspension& operator=(const RulesSuspension&) = delete;

  /// Throws what the destructor, which ends it otherwise, leaves to the commit.
  void End();

 private:
  std::shared_ptr<Storage> storage_;
  bool wereObeyed_;
  bool hasEnded_ = false;
};

/// What a long maintenance operation reports: the part done, 0 to 1. Returning false stops it with
/// kCancelled, leaving the source as it was.
using MaintenanceProgress = std::function<bool(double)>;

/// An open database: a file, or what a link file names on a server. Record sets keep the file open as long as
/// they live; Close() makes every further use of them throw kObjectInvalid.
class Database {
 public:
  explicit Database(std::shared_ptr<Storage> storage);
  ~Database();

  [[nodiscard]] std::string Name() const;  // path
  [[nodiscard]] bool IsReadOnly() const;
  /// True when the open file was renamed or removed, or another one took its name: nothing can be read or
  /// written here any more (kFileReplaced), and the path has to be opened again.
  [[nodiscard]] bool WasReplaced() const;

  /// The tables' names as declared, the engine's own left out.
  [[nodiscard]] std::vector<std::string> TableNames() const;
  /// Letter case of the name is ignored; throws kItemNotFound.
  [[nodiscard]] TableDef TableDefs(std::string_view name);
  /// Makes an empty table; the first counter among its fields is its key. Throws kObjectInvalid when there is
  /// one of that name, kNotSupported on a server, whose tables are made with the log.
  TableDef CreateTableDef(std::string_view name, std::span<const FieldDef> fields);

  /// `source` is a table's name or one SELECT statement in the engine's SQL. Without a type: a table's name
  /// gives a table-type record set, a statement with DISTINCT or computed columns a snapshot, any other a
  /// dynaset. Throws kSyntaxError with a text that names the place, kTableNotFound, kTooFewParameters (a
  /// name that is no field), kNotSupported (a type the source cannot have).
  [[nodiscard]] std::unique_ptr<Recordset> OpenRecordset(std::string_view source,
                                                         std::optional<RecordsetType> type = std::nullopt);

  /// Runs statements in the storage's own SQL, for making and converting databases; never with text that came
  /// from outside the program.
  void Execute(std::string_view storageSql);

  /// Throws kReadOnlyDatabase, kFileInUse.
  [[nodiscard]] ChangeGroup BeginChanges() { return ChangeGroup(storage_); }

  /// For a file that is thrown away when anything fails: from now on nothing is flushed to the disk, and a
  /// crash in the middle of a change leaves a file that is of no use.
  void ForgoSafety();

  /// For converting a database into this one; see BulkRows.h. Throws kTableNotFound.
  [[nodiscard]] std::unique_ptr<BulkRows> OpenBulkRows(std::string_view table);

  /// Numbers that the counter of a table gave out and that no row has, in ascending order; none for a table
  /// without a counter. Throws kTableNotFound.
  [[nodiscard]] std::vector<IdRange> UnusedIds(std::string_view table);

  /// Reads a table from one end to the other; see TableScan.h. Throws kTableNotFound, kTooFewParameters (a
  /// name that is no field).
  [[nodiscard]] std::unique_ptr<TableScan> Scan(std::string_view table, std::span<const std::string> fields,
                                                const ScanRange& range);
  /// For searching in a table's texts as they are typed; see ValueIndex.h. Throws as Scan() does.
  [[nodiscard]] std::unique_ptr<ValueIndex> IndexValues(std::string_view table,
                                                        std::span<const IndexedColumn> columns);
  /// The greatest value of a field of whole numbers; 0 when there is none.
  [[nodiscard]] std::int64_t Greatest(std::string_view table, std::string_view field);
  /// Of the whole log: as long as it stays equal nobody has changed a row. Costs little, for others' changes
  /// of a log on a server are announced; where the connection was lost it is made anew. Throws as reading
  /// does.
  [[nodiscard]] RowStamp Stamp();

  /// Hears of all changes from now on, made through whatever Database object of this open file; see
  /// ChangeJournal.h. Nothing for none.
  void SetJournal(std::shared_ptr<ChangeJournal> journal);

  /// Rules are kept in the file, in the storage's SQL, and refuse changes whatever program makes them. True
  /// when the file holds exactly these.
  [[nodiscard]] bool HasRules(std::span<const std::string> rules);
  /// Puts these in the place of all that the file holds.
  void SetRules(std::span<const std::string> rules);
  /// From now on they hold for this open file as well; false, and they do not, unless HasRules().
  [[nodiscard]] bool ObeyRules(std::span<const std::string> rules);
  /// For a writer whose journal refuses by itself what the rules would.
  [[nodiscard]] RulesSuspension SuspendRules() { return RulesSuspension(storage_); }

  /// Writes a copy of the file as it is at this moment, page by page, while others go on reading; who wants
  /// to write waits. The copy is verified; a failure leaves none. Throws kFileExists, kInvalidPath,
  /// kNoPermission, kNotEnoughDiskSpace, kDamaged, kCancelled.
  void CopyTo(const std::string& target, const MaintenanceProgress& progress = {});
  /// Puts this file's content into another one, which others may have open: nobody else can use it meanwhile,
  /// and a failure or a power cut leaves its old content, of which a copy stays beside it in any case: the
  /// result, NAME.replaced. Throws kFileInUse, kCancelled, what opening throws.
  std::string CopyInto(const std::string& existing, const MaintenanceProgress& progress = {});

  /// ServerState.h; nothing for a file.
  [[nodiscard]] std::optional<ServerState> Server();

  /// Everything that is wrong with the file, one finding an entry; empty when it is sound.
  [[nodiscard]] std::vector<std::string> Check();

  void Close();

 private:
  std::shared_ptr<Storage> storage_;
};

/// A named session. Transactions reach over its databases.
class Workspace {
 public:
  Workspace(std::string name, std::string user, std::shared_ptr<EngineState> state);
  ~Workspace();
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

  [[nodiscard]] const std::string& Name() const { return name_; }
  [[nodiscard]] const std::string& UserName() const { return user_; }

  /// A file of the engine's foreign format can be opened for reading only. It is loaded into memory as it is
  /// at that moment and then behaves like any other database.
  ///
  /// `connect` is "" or ";pwd=..."; a password for a file that has none is ignored. Throws kFileNotFound,
  /// kInvalidPath, kCannotOpen (a folder), kFileInUse, kNoPermission, kUnrecognisedFormat, kDamaged.
  [[nodiscard]] std::shared_ptr<Database> OpenDatabase(const std::string& path, bool exclusive, bool readOnly,
                                                       std::string_view connect = {});

  /// Takes the write lock at once, waiting for another workstation's up to the lock retry time, so that of
  /// two that update the same log one waits for the other. Nested transactions are not supported
  /// (kInvalidTransaction).
  void BeginTrans();
  /// After a failure nothing of the transaction is in the file and it is over: kInvalidTransaction when a
  /// full disk has undone it already, kFileInUse when readers kept the file longer than the lock retry time.
  void CommitTrans();
  void Rollback();

  /// Closes its databases; what is not committed is undone.
  void Close();

 private:
  [[nodiscard]] std::vector<std::shared_ptr<Storage>> OpenStorages();
  void RequireOpen() const;
  void RequireTransaction() const;

  std::string name_;
  std::string user_;
  std::shared_ptr<EngineState> state_;
  std::vector<std::weak_ptr<Storage>> storages_;
  bool inTransaction_ = false;
  bool closed_ = false;
};

/// Option bits of CompactDatabase and CreateDatabase.
enum CompactOption : int { kNoOption = 0, kEncrypt = 2, kDecrypt = 4 };

/// SetOption's numbers.
enum class EngineOption : int {
  kPageTimeout = 6,
  kMaxBufferSize = 8,  // KiB of page cache
  kLockRetry = 57,
  kUserCommitSync = 58,
  kImplicitCommitSync = 59,
  kExclusiveAsyncDelay = 60,
  kSharedAsyncDelay = 61,
  kMaxLocksPerFile = 62,
  kLockDelay = 63,
  kRecycleLVs = 65,
  kFlushTransactionTimeout = 66,
};

/// ISAMStats' numbers.
enum class EngineStatistic : int {
  kDiskReads = 0,
  kDiskWrites = 1,
  kCacheReads = 2,
  kReadAheadCacheReads = 3,
  kLocksPlaced = 4,
  kLocksReleased = 5,
};

/// Is given what a repair has saved before it takes the damaged file's place, to add to it what the engine
/// knows nothing of. What it throws stops the repair.
using FinishRepair = std::function<void(Database& mended, const RepairReport& report)>;

/// The engine: one for the process (Instance()), or one of its own for a test, which may also watch the calls
/// in a class of its own. All calls come from one thread.
class DBEngine {
 public:
  DBEngine();
  virtual ~DBEngine();
  DBEngine(const DBEngine&) = delete;
  DBEngine& operator=(const DBEngine&) = delete;
  [[nodiscard]] static DBEngine& Instance();

  /// Name and version of the storage and of the text order, for the about box.
  [[nodiscard]] static std::string StorageVersion();
  [[nodiscard]] static std::string TextOrderVersion();

  /// The other format that databases may have when they are opened for reading; none unless set.
  void SetForeignFormat(ForeignFormat format);

  /// Is asked now and then while a server is being reached, so that a window stays alive; false gives up
  /// (kCancelled). Gives back the one that was asked so far.
  std::function<bool()> SetWaiting(std::function<bool()> waiting);

  /// The workgroup file that names the accounts; checked by CreateWorkspace.
  [[nodiscard]] const std::string& SystemDB() const { return systemDB_; }
  void SetSystemDB(std::string path) { systemDB_ = std::move(path); }

  /// Throws kWorkgroupFileMissing or kBadAccount. The workspace is not yet in the collection.
  [[nodiscard]] std::shared_ptr<Workspace> CreateWorkspace(std::string name, std::string user,
                                                           std::string_view password);
  void AppendWorkspace(std::shared_ptr<Workspace> workspace);
  void RemoveWorkspace(const std::shared_ptr<Workspace>& workspace);
  /// Throws kItemNotFound.
  [[nodiscard]] std::shared_ptr<Workspace> Workspaces(std::string_view name) const;

  /// Makes an empty file; throws kFileExists, kInvalidPath, kNoPermission. `locale` is accepted and has no
  /// effect: text order is always the engine's one collation. kEncrypt has no counterpart and is accepted.
  [[nodiscard]] virtual std::shared_ptr<Database> CreateDatabase(const std::string& path,
                                                                 std::string_view locale, int options);
  /// Writes a compacted copy; `target` must not exist (kFileExists). The source stays as it is, and no target
  /// is left behind by a failure. kEncrypt and kDecrypt only compact: files are not encrypted.
  virtual void CompactDatabase(const std::string& source, const std::string& target, int options = kNoOption,
                               const MaintenanceProgress& progress = {});
  /// Compacts by way of `temporary` and puts the result back into the same file, which others may have open:
  /// nobody else can use it meanwhile, and a failure or a power cut leaves its old content. `temporary` is
  /// gone afterwards; one that a crash left is removed, any other file of that name is kFileExists. Throws
  /// kFileInUse when another program is using the file or `temporary`.
  virtual void CompactInPlace(const std::string& path, const std::string& temporary, int options = kNoOption,
                              const MaintenanceProgress& progress = {});
  /// Mends the file in place: a sound one is left alone; otherwise every readable row is saved and put back
  /// into the same file in one transaction, and a copy of the damaged one stays beside it as NAME.damaged
  /// (NAME.damaged2, ... where there is one already). Triggers are kept. Throws kUnrecognisedFormat when
  /// nothing can be read; the file then stays as it was.
  virtual RepairReport RepairDatabase(const std::string& path, const MaintenanceProgress& progress = {},
                                      const FinishRepair& finish = {});

  /// To be called before any file gets the name of a log: renames a journal of that name, which an earlier
  /// log has left and which would be applied to the new one, to NAME-journal.aside. Throws kNoPermission.
  static void PutJournalAside(const std::string& path);

  /// dbRefreshCache: finishes pending writes and makes the next read look at the disk. Inside a transaction
  /// what has been changed so far is written out ahead of the commit, so that a full disk shows early.
  virtual void Idle(bool refreshCache);

  /// A count since the process started or since it was last reset.
  virtual std::int64_t ISAMStats(EngineStatistic statistic, bool reset = false);

  /// Numbers, or "Yes"/"No" for the two Sync options; another type of value throws kNotSupported. What the
  /// storage has no counterpart for is accepted without effect: the table in EngineOptions.cpp says which.
  virtual void SetOption(EngineOption option, const std::variant<std::int32_t, std::string>& value);

 private:
  std::string systemDB_;
  std::vector<std::shared_ptr<Workspace>> workspaces_;
  std::shared_ptr<EngineState> state_;
};

/// While it lives, this one is asked while a server is being reached, afterwards again the one before.
class WaitingScope {
 public:
  WaitingScope(DBEngine& engine, std::function<bool()> waiting)
      : engine_(engine), before_(engine.SetWaiting(std::move(waiting))) {}
  ~WaitingScope() { engine_.SetWaiting(std::move(before_)); }
  WaitingScope(const WaitingScope&) = delete;
  WaitingScope& operator=(const WaitingScope&) = delete;

 private:
  DBEngine& engine_;
  std::function<bool()> before_;
};

}  // namespace varnlog::dao
