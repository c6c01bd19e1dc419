#include "db/CJetEngine.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <utility>

#include "platform/Files.h"

namespace varnlog::db {

namespace {

constexpr std::string_view kSeparators = "\\/";
constexpr const char* kGeneralLocale = ";LANGID=0x0409;CP=1252;COUNTRY=0";

// Up to and including the last separator; empty when there is none.
std::string FolderOf(const std::string& path) {
  return path.substr(0, path.find_last_of(kSeparators) + 1);
}

// Behind the last separator and before the first point: "Log" for "Log.v1.mdb".
std::string BaseNameOf(const std::string& path) {
  const std::string name = path.substr(path.find_last_of(kSeparators) + 1);
  return name.substr(0, name.find('.'));
}

std::string TemporaryFor(const std::string& path) {
  return FolderOf(path) + BaseNameOf(path) + ".TMP";
}

std::int32_t Narrowed(std::uint64_t number) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::min(number, kMost));
}

std::int32_t LengthOf(const std::string& path) {
  const auto size = platform::FileSize(platform::ToPath(path));
  if (!size)
    throw dao::EngineError(dao::ErrorNumber::kFileNotFound, "The file '" + path + "' cannot be found.");
  return Narrowed(*size);
}

[[noreturn]] void ThrowMissing(const char* what) {
  throw dao::EngineError(dao::ErrorNumber::kObjectInvalid, std::string("No ") + what + " is open.");
}

std::string YesOrNo(bool value) {
  return value ? "Yes" : "No";
}

}  // namespace

CJetEngine::CJetEngine(dao::DBEngine& engine) : engine_(engine) {}

CJetEngine::~CJetEngine() {
  if (workspace_ != nullptr) CloseWorkspace();
}

template <typename Operation>
std::int32_t CJetEngine::Trap(const Operation& operation) {
  lastNumber_ = 0;
  try {
    operation();
  } catch (const dao::EngineError& error) {
    lastError_ = error.what();
    lastNumber_ = static_cast<std::int32_t>(error.number());
  } catch (const std::exception& error) {
    lastError_ = error.what();
    lastNumber_ = static_cast<std::int32_t>(dao::ErrorNumber::kUnexpected);
  }
  return lastNumber_;
}

dao::Workspace& CJetEngine::RequireWorkspace() const {
  if (workspace_ == nullptr) ThrowMissing("workspace");
  return *workspace_;
}

dao::Database& CJetEngine::RequireDatabase() const {
  if (database_ == nullptr) ThrowMissing("database");
  return *database_;
}

std::int32_t CJetEngine::Statistic(dao::EngineStatistic statistic, bool reset) {
  std::int32_t result = 0;
  Trap([&] { result = Narrowed(static_cast<std::uint64_t>(engine_.ISAMStats(statistic, reset))); });
  return result;
}

std::int32_t CJetEngine::ISAMDiskReads() {
  return Statistic(dao::EngineStatistic::kDiskReads, false);
}
std::int32_t CJetEngine::ISAMDiskWrites() {
  return Statistic(dao::EngineStatistic::kDiskWrites, false);
}
std::int32_t CJetEngine::ISAMCacheReads() {
  return Statistic(dao::EngineStatistic::kCacheReads, false);
}
std::int32_t CJetEngine::ISAMRACacheReads() {
  return Statistic(dao::EngineStatistic::kReadAheadCacheReads, false);
}
std::int32_t CJetEngine::ISAMLocksPlaced() {
  return Statistic(dao::EngineStatistic::kLocksPlaced, false);
}
std::int32_t CJetEngine::ISAMLocksReleased() {
  return Statistic(dao::EngineStatistic::kLocksReleased, false);
}
void CJetEngine::ResetISAMDiskReads() {
  Statistic(dao::EngineStatistic::kDiskReads, true);
}
void CJetEngine::ResetISAMDiskWrites() {
  Statistic(dao::EngineStatistic::kDiskWrites, true);
}
void CJetEngine::ResetISAMCacheReads() {
  Statistic(dao::EngineStatistic::kCacheReads, true);
}
void CJetEngine::ResetISAMRACacheReads() {
  Statistic(dao::EngineStatistic::kReadAheadCacheReads, true);
}
void CJetEngine::ResetISAMLocksPlaced() {
  Statistic(dao::EngineStatistic::kLocksPlaced, true);
}
void CJetEngine::ResetISAMLocksReleased() {
  Statistic(dao::EngineStatistic::kLocksReleased, true);
}

void CJetEngine::Tune(dao::EngineOption option, const std::variant<std::int32_t, std::string>& value) {
  Trap([&] { engine_.SetOption(option, value); });
}

void CJetEngine::TuneExclusiveAsyncDelay(std::int32_t milliseconds) {
  Tune(dao::EngineOption::kExclusiveAsyncDelay, milliseconds);
}
void CJetEngine::TuneFlushTransactionTimeout(std::int32_t milliseconds) {
  Tune(dao::EngineOption::kFlushTransactionTimeout, milliseconds);
}
void CJetEngine::TuneImplicitCommitSync(bool sync) {
  Tune(dao::EngineOption::kImplicitCommitSync, YesOrNo(sync));
}
void CJetEngine::TuneLockDelay(std::int32_t milliseconds) {
  Tune(dao::EngineOption::kLockDelay, milliseconds);
}
void CJetEngine::TuneLockRetry(std::int32_t times) {
  Tune(dao::EngineOption::kLockRetry, times);
}
void CJetEngine::TuneMaxBufferSize(std::int32_t kibibytes) {
  Tune(dao::EngineOption::kMaxBufferSize, kibibytes);
}
void CJetEngine::TuneMaxLocksPerFile(std::int32_t locks) {
  Tune(dao::EngineOption::kMaxLocksPerFile, locks);
}
void CJetEngine::TunePageTimeout(std::int32_t milliseconds) {
  Tune(dao::EngineOption::kPageTimeout, milliseconds);
}
void CJetEngine::TuneRecycleLVs(std::int32_t value) {
  Tune(dao::EngineOption::kRecycleLVs, value);
}
void CJetEngine::TuneSharedAsyncDelay(std::int32_t milliseconds) {
  Tune(dao::EngineOption::kSharedAsyncDelay, milliseconds);
}
void CJetEngine::TuneUserCommitSync(bool sync) {
  Tune(dao::EngineOption::kUserCommitSync, YesOrNo(sync));
}

void CJetEngine::SetWorkgroupPath(const std::string& path) {
  Trap([&] { engine_.SetSystemDB(path); });
}

void CJetEngine::OpenWorkspace(const std::string& name, const std::string& user,
                               const std::string& password) {
  Trap([&] {
    workspace_ = engine_.CreateWorkspace(name, user, password);
    engine_.AppendWorkspace(workspace_);
    workspaceName_ = workspace_->Name();
  });
}

void CJetEngine::CloseWorkspace() {
  Trap([&] {
    RequireWorkspace().Close();
    engine_.RemoveWorkspace(workspace_);
    workspace_.reset();
    workspaceName_.clear();
  });
}

std::int32_t CJetEngine::OpenDBInWorkspace(const std::string& path, bool exclusive, bool readOnly,
                                           const std::optional<std::string>& password) {
  return Trap([&] {
    const std::string connect = password ? ";pwd=" + *password : std::string();
    const auto workspace = engine_.Workspaces(RequireWorkspace().Name());
    database_ = workspace->OpenDatabase(path, exclusive, readOnly, connect);
    exclusive_ = exclusive;
    readOnly_ = readOnly;
    if (password) password_ = password;
  });
}

void CJetEngine::CloseDBInWorkspace() {
  Trap([&] {
    RequireDatabase().Close();
    database_.reset();
  });
}

// In place the engine swaps the files itself, because nobody may write to the old one between the copy and
// the swap; a compaction that fails leaves it where it is.
void CJetEngine::Compact(const std::string& source, const std::optional<std::string>& destination,
                         int options) {
  if (destination)
    engine_.CompactDatabase(source, *destination, options, progress_);
  else
    engine_.CompactInPlace(source, TemporaryFor(source), options, progress_);
}

std::int32_t CJetEngine::CompactDatabase(const std::string& source,
                                         const std::optional<std::string>& destination) {
  std::int32_t result = 0;
  Trap([&] {
    Compact(source, destination, dao::kNoOption);
    if (destination) result = LengthOf(*destination);
  });
  return result;
}

std::int32_t CJetEngine::DecryptDatabase(const std::string& source,
                                         const std::optional<std::string>& destination) {
  std::int32_t result = 0;
  Trap([&] {
    Compact(source, destination, dao::kDecrypt);
    result = LengthOf(destination.value_or(source));
  });
  return result;
}

std::int32_t CJetEngine::EncryptDatabase(const std::string& source,
                                         const std::optional<std::string>& destination) {
  std::int32_t result = 0;
  Trap([&] {
    Compact(source, destination, dao::kEncrypt);
    result = LengthOf(destination.value_or(source));
  });
  return result;
}

std::int32_t CJetEngine::CreateDatabase(const std::string& path, std::int32_t options, bool encrypt,
                                        const std::optional<std::string>& locale) {
  std::int32_t result = 0;
  Trap([&] {
    const int allOptions = encrypt ? options | dao::kEncrypt : options;
    engine_.CreateDatabase(path, locale.value_or(kGeneralLocale), allOptions)->Close();
    result = LengthOf(path);
  });
  return result;
}

std::int32_t CJetEngine::RepairDatabase(const std::string& path) {
  Trap([&] { repaired_ = engine_.RepairDatabase(path, progress_, finishRepair_); });
  return 0;
}

bool CJetEngine::RefreshCache() {
  return Trap([&] { engine_.Idle(true); }) == 0;
}

bool CJetEngine::TransactionCommit() {
  return Trap([&] { RequireWorkspace().CommitTrans(); }) == 0;
}

bool CJetEngine::TransactionRollback() {
  return Trap([&] { RequireWorkspace().Rollback(); }) == 0;
}

bool CJetEngine::TransactionStart() {
  return Trap([&] { RequireWorkspace().BeginTrans(); }) == 0;
}

bool CJetEngine::AddField(const std::string& table, const dao::FieldDef& field) {
  return Trap([&] { RequireDatabase().TableDefs(table).Append(field); }) == 0;
}

bool CJetEngine::AddTextFieldToTable(const std::string& table, const std::string& field, std::int32_t size) {
  return AddField(table, {.name = field, .type = dao::FieldType::kText, .size = size});
}

bool CJetEngine::AddBooleanFieldToTable(const std::string& table, const std::string& field) {
  return AddField(table, {.name = field, .type = dao::FieldType::kBoolean});
}

}  // namespace varnlog::db
