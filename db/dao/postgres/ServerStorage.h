#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "db/dao/postgres/ServerSession.h"
#include "db/dao/rows/RowStore.h"
#include "db/dao/storage/Storage.h"

namespace varnlog::dao {

/// A log on a server. What keeps several programs apart stands in tables of the log's schema: how many
/// changes there have been, the counters of the other tables, and the last change of each opening, by which a
/// commit whose answer was lost is looked up.
///
/// A connection that was lost outside a transaction is made anew with the next statement.
class ServerStorage final : public Storage {
 public:
  /// Throws as Workspace::OpenDatabase() says; a server that can only be read gives a storage for reading.
  [[nodiscard]] static std::shared_ptr<ServerStorage> Open(const std::string& path, Mode mode,
                                                           const std::shared_ptr<EngineState>& state);
  ~ServerStorage() override;

  [[nodiscard]] bool IsOpen() const noexcept override { return isOpen_; }
  void Close() noexcept override;
  [[nodiscard]] bool WasReplaced() const override { return false; }
  [[nodiscard]] std::optional<ServerState> Server() override;

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
  [[nodiscard]] RowStamp Stamp() override;

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
  /// They always hold; a writer that needs none of them, an update, has its changes sent many at once.
  [[nodiscard]] bool AreRulesObeyed() override { return !isBulk_; }
  void SetRulesObeyed(bool obeyed) override { isBulk_ = !obeyed; }

  [[nodiscard]] std::vector<std::string> Check() override;
  void CopyTo(const std::string& target, const MaintenanceProgress& progress) override;
  [[nodiscard]] std::string CopyInto(const std::string& existing,
                                     const MaintenanceProgress& progress) override;
  void ForgoSafety() override {}
  void ApplyOptions() override {}
  void Refresh() override;
  [[nodiscard]] std::int64_t CacheReads() const override { return 0; }

  // For the record sets of this folder. What is to be written later is sent before anything else is.
  ServerResult Run(const std::string& sql, const ServerValues& values = {});
  /// The same where nothing that is still to be written matters.
  ServerResult RunAhead(const std::string& sql, const ServerValues& values);
  ServerResult RunOnce(const std::string& sql);
  void CopyOut(const std::string& sql, const std::function<void(std::string_view)>& line);

  /// A row of `COPY table (all its fields) FROM STDIN`, sent with others at once. Within a transaction, which
  /// `table` outlives.
  void AddLater(const TableSchema& table, std::string_view line);
  /// A statement that is sent with others at once, within the program's transaction: one that fails makes
  /// that fail as a whole. `table` and `row` are what it writes.
  void WriteLater(const TableSchema& table, std::int64_t row, std::string_view statement);
  /// The same for a row that is added outside of a part, where there are few of them: it needs no way of its
  /// own.
  void AddLaterByScript(const TableSchema& table, std::int64_t row, std::string_view statement);
  /// Whether row `id`, which has been numbered just now, is to be added in that way.
  [[nodiscard]] bool IsAddedByScript(const TableSchema& table, std::int64_t id) const;
  /// Whether something that is to be written later is about that row.
  [[nodiscard]] bool IsToBeWritten(const TableSchema& table, std::int64_t row) const;
  /// The same of a change.
  [[nodiscard]] bool IsChangedLater(const TableSchema& table, std::int64_t row) const;
  /// How many rows that AddLater() was given are not sent yet.
  [[nodiscard]] std::int64_t UnsentRows(const TableSchema& table) const;
  [[nodiscard]] bool InPart() const { return inPart_; }
  /// Sends what is to be written later; what the server says to it the next statement throws.
  void SendAdded();
  /// A number that the server makes of a table's rows; nothing for NULL. Within a transaction that writes,
  /// what the transactions before it have asked for is asked for at once.
  [[nodiscard]] std::optional<std::int64_t> NumberFrom(const TableSchema& table,
                                                       const std::string& expression);
  /// The next number of the table's counter, within a transaction.
  [[nodiscard]] std::int64_t NextCounter(const TableSchema& table);
  void SetCounter(const TableSchema& table, std::int64_t last);
  /// The last number that the table's counter gave out.
  [[nodiscard]] std::int64_t LastCounter(const TableSchema& table);
  /// The field that tells the table's rows apart: its counter, or one that only the server has.
  [[nodiscard]] static std::string KeyField(const TableSchema& table);

  [[nodiscard]] RowStamp RecentStamp();
  [[nodiscard]] std::int64_t OthersVersion();
  /// The same after a statement that has read the number of all changes, `changes`.
  [[nodiscard]] RowStore::State StateAt(std::int64_t changes);
  /// Rows changed through this storage other than by adding, undone or not; and the number of the
  /// transaction.
  [[nodiscard]] std::int64_t OwnChanges() const { return ownChanges_; }
  [[nodiscard]] std::int64_t Epoch() const { return epoch_; }
  /// The number of the transaction that holds the log's write right, so that nobody else can change a row; 0
  /// for none.
  [[nodiscard]] std::int64_t WriteRight() const {
    return transaction_ == Transaction::kWriting ? writeRights_ : 0;
  }
  [[nodiscard]] std::int64_t UndoneParts() const { return undoneParts_; }
  void NoteChange(const TableSchema& table) {
    ++ownChanges_;
    NoteWritten(table);
  }
  /// To be called before anything is written to the table.
  void NoteWritten(const TableSchema& table);
  /// Of these, changes of a value by which rows are found.
  [[nodiscard]] std::int64_t Moves() const { return moves_; }
  void NoteMove() { ++moves_; }

  /// Fields of which an index has too many combinations to be walked from one to the next.
  [[nodiscard]] std::set<std::string>& LongWalks() { return longWalks_; }

  // Several statements that see the same state, until all readers are gone.
  void BeginReading();
  void EndReading() noexcept;

 private:
  ServerStorage(const std::string& path, Mode mode, const std::shared_ptr<EngineState>& state);
  void Connect();
  void CheckLayout();
  void EndReadTransaction();
  [[nodiscard]] ServerSession& Line();
  template <typename Operation>
  auto Attempt(const Operation& operation);
  ServerResult RunScript(const std::string& sql);
  void RenewPlans();
  void AppendScript(std::string_view text);
  void SendIfMuch();
  void ForgetAdded() noexcept;
  void SettleAdded();
  void MakeYears(const TableSchema& table, std::string_view lines);
  void BeginWriting();
  void Commit();
  [[nodiscard]] std::string CommitScript() const;
  [[nodiscard]] bool WasCommitted();
  void Undo() noexcept;
  void EndTransaction() noexcept;
  void RequireIntactWork() const;
  void HearAnnounced();
  void Listen();
  void AskStandby();

  LinkFile link_;
  std::unique_ptr<ServerSession> session_;
  bool isOpen_ = true;
  bool isConnecting_ = false;
  std::string id_;       // of this opening
  std::string channel_;  // on which changes are announced, quoted
  std::chrono::steady_clock::time_point lastFailure_;
  std::optional<EngineError> failure_;  // that one
  std::map<std::string, std::shared_ptr<const TableSchema>> tables_;
  std::set<std::string> longWalks_;
  std::map<std::string, std::size_t> yearFields_;  // of tables that are divided by the year of a date
  std::set<std::string, std::less<>> years_;       // that this transaction has seen to

  enum class Transaction { kNone, kReading, kWriting, kLost };
  Transaction transaction_ = Transaction::kNone;
  bool inWork_ = false;
  bool isBulk_ = false;
  int readers_ = 0;
  std::int64_t transactions_ = 0;                     // that this opening has committed or tried to
  std::map<std::string, std::int64_t> counters_;      // as they were when the transaction began
  std::map<std::string, std::int64_t> usedCounters_;  // and what it made of them
  std::map<std::string, std::int64_t> partCounters_;  // the same when the part began
  struct Copied {
    const TableSchema* table = nullptr;
    std::string lines;
  };
  std::vector<Copied> copies_;  // what is to be written later: first these, ...
  std::string script_;          // ... then this
  struct AskedNumber {
    std::string table;
    std::string expression;
    std::optional<std::int64_t> number;
    std::int64_t writeRight = 0;  // when it was read, ...
    std::int64_t written = 0;     // ... and how often the table had been written to
  };
  std::vector<AskedNumber> asked_;
  std::map<std::string, std::int64_t> written_;              // by table
  std::int64_t writeRights_ = 0;                             // that this opening has had
  std::map<std::string, std::set<std::int64_t>> addedRows_;  // that they write, by table
  std::map<std::string, std::int64_t> unsentRows_;           // by table
  std::int64_t sent_ = 0;                                    // how often they were sent
  bool inPart_ = false;                                      // of the program's transaction
  bool isPartSaved_ = false;                                 // it can be undone when it was sent, ...
  bool isPartBegun_ = false;                                 // ... and something of it is to be written
  std::size_t partLength_ = 0;                               // of the script when it began
  std::int64_t partSent_ = 0;

  std::int64_t changes_ = 0;       // of the log, the greatest number heard of
  std::int64_t ownCommitted_ = 0;  // of these
  std::int64_t ownChanges_ = 0;
  std::int64_t moves_ = 0;
  std::int64_t epoch_ = 0;
  std::int64_t undoneParts_ = 0;
  std::chrono::steady_clock::time_point heard_;
  std::chrono::steady_clock::time_point askedStandby_;
  // When the server last chose how to run prepared statements, and how many changes of others there were
  // then.
  std::chrono::steady_clock::time_point plansMade_ = std::chrono::steady_clock::now();
  std::int64_t othersAtPlans_ = 0;
  std::int64_t rowsAdded_ = 0;  // here
  std::int64_t rowsToRenew_ = 2048;
};

/// While it lives the statements of a storage see the same state.
class ReadingScope {
 public:
  explicit ReadingScope(ServerStorage& storage) : storage_(storage) { storage_.BeginReading(); }
  ~ReadingScope() { storage_.EndReading(); }
  ReadingScope(const ReadingScope&) = delete;
  ReadingScope& operator=(const ReadingScope&) = delete;

 private:
  ServerStorage& storage_;
};

}  // namespace varnlog::dao
