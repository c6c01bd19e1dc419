#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "db/dao/sqlite/Connection.h"
#include "db/dao/storage/Storage.h"

namespace varnlog::dao {

class DistinctRows;
class OrderedIds;
class SelectCache;

/// A log in a file: a connection and what is kept of its content.
class FileStorage final : public Storage {
 public:
  /// Opens an existing file; throws as Workspace::OpenDatabase() says.
  [[nodiscard]] static std::shared_ptr<FileStorage> Open(const std::string& path, Mode mode,
                                                         const std::shared_ptr<EngineState>& state);
  /// Makes an empty database; throws kFileExists.
  [[nodiscard]] static std::shared_ptr<FileStorage> Create(const std::string& path,
                                                           const std::shared_ptr<EngineState>& state);
  /// The same in a file that the caller has made and that is empty.
  [[nodiscard]] static std::shared_ptr<FileStorage> CreateIn(const std::string& emptyFile,
                                                             const std::shared_ptr<EngineState>& state);
  /// An empty database in memory for the content of the file `path`.
  [[nodiscard]] static std::shared_ptr<FileStorage> InMemory(const std::string& path,
                                                             const std::shared_ptr<EngineState>& state);
  ~FileStorage() override;

  [[nodiscard]] Connection& File() { return file_; }
  [[nodiscard]] bool IsOpen() const noexcept override { return file_.IsOpen(); }
  void Close() noexcept override;
  [[nodiscard]] bool WasReplaced() const override { return file_.WasReplaced(); }

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
  [[nodiscard]] RowStamp Stamp() override { return file_.Watch().Current(); }

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
  void LetRowsWait(bool may) override;
  /// Whether an added row may be left to Connection::Hold().
  [[nodiscard]] bool MayRowsWait() const { return inWork_ && mayRowsWait_; }

  [[nodiscard]] std::vector<std::string> Check() override;
  void CopyTo(const std::string& target, const MaintenanceProgress& progress) override;
  [[nodiscard]] std::string CopyInto(const std::string& existing,
                                     const MaintenanceProgress& progress) override;

  void ForgoSafety() override { file_.ForgoSafety(); }
  void ApplyOptions() override;
  void Refresh() override;
  [[nodiscard]] std::int64_t CacheReads() const override { return file_.CacheReads(); }

  [[nodiscard]] SelectCache& Selects() { return *selects_; }
  [[nodiscard]] DistinctRows& Distinct() { return *distinct_; }
  [[nodiscard]] OrderedIds& Ordered() { return *ordered_; }
  /// The definitions of tables and the statements that were made of them.
  void ForgetSchema();

 private:
  FileStorage(const std::string& path, Mode mode, const std::shared_ptr<EngineState>& state);
  void ChangeDefinitions(const std::string& storageSql);
  /// kInvalidTransaction when the storage had to undo the program's transaction (a full disk), so that
  /// nothing is written half outside it.
  void RequireIntactWork() const;
  void EndWork() noexcept;
  [[nodiscard]] std::shared_ptr<FileStorage> Self() {
    return std::static_pointer_cast<FileStorage>(shared_from_this());
  }

  Connection file_;
  bool inWork_ = false;
  bool mayRowsWait_ = false;
  std::map<std::string, std::shared_ptr<const TableSchema>> tables_;
  std::unique_ptr<SelectCache> selects_;
  std::unique_ptr<DistinctRows> distinct_;
  std::unique_ptr<OrderedIds> ordered_;
};

}  // namespace varnlog::dao
