#include "server/ServerLog.h"

#include <memory>

#include "core/LogLayout.h"
#include "db/dao/ServerLink.h"
#include "db/dao/ServerState.h"
#include "platform/SafeFile.h"
#include "seals/SealTables.h"
#include "server/ServerSql.h"

namespace varnlog::server {

namespace {

// In one transaction with what happens between the two, so that the rules are never off for others.
constexpr const char* kRulesOff =
    "ALTER TABLE \"TXray\" DISABLE TRIGGER USER; ALTER TABLE \"THistory\" DISABLE TRIGGER USER; "
    "ALTER TABLE \"TSeal\" DISABLE TRIGGER USER";
constexpr const char* kRulesOn =
    "ALTER TABLE \"TXray\" ENABLE TRIGGER USER; ALTER TABLE \"THistory\" ENABLE TRIGGER USER; "
    "ALTER TABLE \"TSeal\" ENABLE TRIGGER USER";

[[noreturn]] void Refuse(const std::string& text) {
  throw dao::EngineError(dao::ErrorNumber::kNotSupported, text);
}

// A workspace of its own, so that the program's transactions and open databases stay out of it.
class Work {
 public:
  explicit Work(dao::DBEngine& engine) : workspace_(engine.CreateWorkspace("ServerWs", "Admin", "")) {}
  ~Work() {
    try {
      workspace_->Close();
    } catch (const dao::EngineError&) {
      return;  // what is not committed is undone
    }
  }
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;
  [[nodiscard]] dao::Workspace& operator*() const { return *workspace_; }

 private:
  std::shared_ptr<dao::Workspace> workspace_;
};

// A link's target that is taken by mistake for a file, or the other way round, is told apart at once.
std::shared_ptr<dao::Database> OpenLink(dao::Workspace& workspace, const std::string& link, bool readOnly) {
  if (!dao::IsServerLink(link)) Refuse("'" + link + "' does not name a server.");
  return workspace.OpenDatabase(link, false, readOnly);
}

}  // namespace

void InitLog(const std::string& link, bool byYear) {
  if (!dao::IsServerLink(link)) Refuse("'" + link + "' does not name a server.");
  dao::DeclareOnServer(link, kServerSql, byYear);
}

Transfer AdoptLog(dao::DBEngine& engine, const std::string& link, const std::string& logFile,
                  const TransferProgress& progress) {
  const Work work(engine);
  const auto target = OpenLink(*work, link, false);
  const auto source = (*work).OpenDatabase(logFile, true, false);
  if (!core::IsLog(*source) || !seals::HasSeals(*source))
    Refuse("'" + logFile +
           "' is no log of this version with its seals; the program makes it one by opening it.");
  const auto state = target->Server();
  if (!state->isOwner) Refuse("The account is not that of the log's owner on the server.");
  (*work).BeginTrans();
  if (!seals::IsUnused(*target)) Refuse("The log on the server is not empty.");
  target->Execute(kRulesOff);
  const Transfer transfer = TransferLog(*source, *target, progress);
  target->Execute(kRulesOn);
  (*work).CommitTrans();
  return transfer;
}

Transfer ExportLog(dao::DBEngine& engine, const std::string& link, const std::filesystem::path& emptyLog,
                   const std::string& logFile, const TransferProgress& progress) {
  const Work work(engine);
  const auto source = OpenLink(*work, link, true);
  const std::filesystem::path path = platform::ToPath(logFile);
  std::error_code error;
  platform::NewFile made(path, error, path);
  if (error) throw dao::EngineError(dao::ErrorNumber::kNoPermission, "'" + logFile + "' cannot be made.");
  if (std::filesystem::exists(path))
    throw dao::EngineError(dao::ErrorNumber::kFileExists, "'" + logFile + "' exists already.");
  const auto content = platform::ReadWholeFile(emptyLog, error);
  if (!error) made.file().WriteAt(0, *content, error);
  if (error)
    throw dao::EngineError(dao::ErrorNumber::kDiskError,
                           "'" + logFile + "' cannot be written: " + error.message());
  Transfer transfer;
  {
    const auto target = (*work).OpenDatabase(platform::FromPath(made.path()), false, false);
    (*work).BeginTrans();
    if (!seals::HasSealTables(*target)) seals::MakeSealTables(*target);
    transfer = TransferLog(*source, *target, progress);
    (*work).CommitTrans();
    target->Close();
  }
  dao::DBEngine::PutJournalAside(logFile);
  error = made.TakePlace(platform::IfTaken::kFail);
  if (error)
    throw dao::EngineError(dao::ErrorNumber::kDiskError,
                           "'" + logFile + "' cannot be written: " + error.message());
  return transfer;
}

}  // namespace varnlog::server
