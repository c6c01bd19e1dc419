#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "db/dao/DBEngine.h"

namespace varnlog::db {

/// The program's single doorway to the database engine: one named workspace and at most one open database in
/// it. No failure leaves this class as an exception: the engine's text is kept in LastError() (never cleared
/// by a later success) and the result keeps its default.
class CJetEngine {
 public:
  /// All instances share one engine; `engine` lets a test bring its own.
  explicit CJetEngine(dao::DBEngine& engine = dao::DBEngine::Instance());
  ~CJetEngine();
  CJetEngine(const CJetEngine&) = delete;
  CJetEngine& operator=(const CJetEngine&) = delete;

  /// The open database, or nullptr.
  [[nodiscard]] const std::shared_ptr<dao::Database>& Database() const { return database_; }
  void SetDatabase(std::shared_ptr<dao::Database> database) { database_ = std::move(database); }

  std::int32_t ISAMDiskReads();
  std::int32_t ISAMDiskWrites();
  std::int32_t ISAMCacheReads();
  std::int32_t ISAMRACacheReads();
  std::int32_t ISAMLocksPlaced();
  std::int32_t ISAMLocksReleased();
  void ResetISAMDiskReads();
  void ResetISAMDiskWrites();
  void ResetISAMCacheReads();
  void ResetISAMRACacheReads();
  void ResetISAMLocksPlaced();
  void ResetISAMLocksReleased();

  void TuneExclusiveAsyncDelay(std::int32_t milliseconds);
  void TuneFlushTransactionTimeout(std::int32_t milliseconds);
  void TuneImplicitCommitSync(bool sync);
  void TuneLockDelay(std::int32_t milliseconds);
  void TuneLockRetry(std::int32_t times);
  void TuneMaxBufferSize(std::int32_t kibibytes);
  void TuneMaxLocksPerFile(std::int32_t locks);
  void TunePageTimeout(std::int32_t milliseconds);
  void TuneRecycleLVs(std::int32_t value);
  void TuneSharedAsyncDelay(std::int32_t milliseconds);
  void TuneUserCommitSync(bool sync);

  /// The workgroup file; to be set before OpenWorkspace.
  void SetWorkgroupPath(const std::string& path);
  /// "" when no workspace is open.
  [[nodiscard]] const std::string& WorkspaceName() const { return workspaceName_; }

  void CloseDBInWorkspace();
  void CloseWorkspace();

  /// Without a destination the file is compacted in place by way of BASENAME.TMP beside it and the result is
  /// 0; with one the result is the destination's length in bytes.
  std::int32_t CompactDatabase(const std::string& source, const std::optional<std::string>& destination = {});
  /// The length of the new file in bytes.
  std::int32_t CreateDatabase(const std::string& path, std::int32_t options, bool encrypt,
                              const std::optional<std::string>& locale = {});
  /// Compact with the engine's decrypt or encrypt option; the result is the resulting file's length. The
  /// storage has no encryption, so the content stays as readable as it was.
  std::int32_t DecryptDatabase(const std::string& source, const std::optional<std::string>& destination = {});
  std::int32_t EncryptDatabase(const std::string& source, const std::optional<std::string>& destination = {});

  /// 0, or the number of the engine error that stopped it.
  std::int32_t OpenDBInWorkspace(const std::string& path, bool exclusive, bool readOnly,
                                 const std::optional<std::string>& password = {});
  void OpenWorkspace(const std::string& name, const std::string& user, const std::string& password);
  /// False when pending changes cannot be written. Inside a transaction they are written ahead of the commit,
  /// so that a full disk shows before anything is done that relies on it.
  bool RefreshCache();
  /// Always 0; LastNumber() tells whether it was done and Repaired() what was found.
  std::int32_t RepairDatabase(const std::string& path);
  /// What the last repair that was done found and saved.
  [[nodiscard]] const dao::RepairReport& Repaired() const { return repaired_; }
  /// Is given what RepairDatabase has saved before it takes the damaged file's place.
  void SetFinishRepair(dao::FinishRepair finish) { finishRepair_ = std::move(finish); }

  /// True when done. After a failed commit the transaction is over and nothing of it was kept.
  bool TransactionCommit();
  bool TransactionRollback();
  bool TransactionStart();

  bool AddTextFieldToTable(const std::string& table, const std::string& field, std::int32_t size);
  bool AddBooleanFieldToTable(const std::string& table, const std::string& field);

  [[nodiscard]] const std::string& LastError() const { return lastError_; }
  /// 0 when the operation called last succeeded, otherwise the number of the error that stopped it.
  [[nodiscard]] std::int32_t LastNumber() const { return lastNumber_; }

  /// Hears how far CompactDatabase and RepairDatabase are.
  void SetMaintenanceProgress(dao::MaintenanceProgress progress) { progress_ = std::move(progress); }

 private:
  /// The one trap of every operation: 0, or the number of the error whose text is now in LastError().
  template <typename Operation>
  std::int32_t Trap(const Operation& operation);
  std::int32_t Statistic(dao::EngineStatistic statistic, bool reset);
  void Tune(dao::EngineOption option, const std::variant<std::int32_t, std::string>& value);
  void Compact(const std::string& source, const std::optional<std::string>& destination, int options);
  bool AddField(const std::string& table, const dao::FieldDef& field);
  [[nodiscard]] dao::Workspace& RequireWorkspace() const;
  [[nodiscard]] dao::Database& RequireDatabase() const;

  dao::DBEngine& engine_;
  std::shared_ptr<dao::Workspace> workspace_;
  std::shared_ptr<dao::Database> database_;
  std::string workspaceName_;
  std::string lastError_;
  std::int32_t lastNumber_ = 0;
  bool exclusive_ = false;
  bool readOnly_ = false;
  std::optional<std::string> password_;
  dao::MaintenanceProgress progress_;
  dao::FinishRepair finishRepair_;
  dao::RepairReport repaired_;
};

}  // namespace varnlog::db
