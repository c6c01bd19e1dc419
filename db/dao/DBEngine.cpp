#include "db/dao/DBEngine.h"

#include <algorithm>
#include <utility>

#include "db/dao/ServerLink.h"
#include "db/dao/sqlite/FileChecks.h"
#include "db/dao/sqlite/FileStorage.h"
#include "db/dao/sqlite/Maintenance.h"
#include "db/dao/storage/EngineState.h"
#include "db/dao/storage/Workgroup.h"

namespace varnlog::dao {

void RequireFile(const std::string& path) {
  if (IsServerLink(path))
    throw EngineError(ErrorNumber::kServersOwn,
                      "The log that '" + path + "' names lies on a server, which sees to its upkeep itself.");
}

DBEngine::DBEngine() : state_(std::make_shared<EngineState>()) {}
DBEngine::~DBEngine() = default;

DBEngine& DBEngine::Instance() {
  static DBEngine engine;
  return engine;
}

void DBEngine::SetForeignFormat(ForeignFormat format) {
  state_->foreign = std::move(format);
}

std::function<bool()> DBEngine::SetWaiting(std::function<bool()> waiting) {
  return std::exchange(state_->waiting, std::move(waiting));
}

std::shared_ptr<Workspace> DBEngine::CreateWorkspace(std::string name, std::string user,
                                                     std::string_view password) {
  CheckAccount(systemDB_, user, password, state_);
  return std::make_shared<Workspace>(std::move(name), std::move(user), state_);
}

void DBEngine::AppendWorkspace(std::shared_ptr<Workspace> workspace) {
  workspaces_.push_back(std::move(workspace));
}

void DBEngine::RemoveWorkspace(const std::shared_ptr<Workspace>& workspace) {
  std::erase(workspaces_, workspace);
}

std::shared_ptr<Workspace> DBEngine::Workspaces(std::string_view name) const {
  // The one appended last: a name can be in use twice while an old session still closes.
  const auto found = std::find_if(workspaces_.rbegin(), workspaces_.rend(),
                                  [&](const auto& each) { return SameName(each->Name(), name); });
  if (found == workspaces_.rend())
    throw EngineError(ErrorNumber::kItemNotFound, "There is no workspace '" + std::string(name) + "'.");
  return *found;
}

std::shared_ptr<Database> DBEngine::CreateDatabase(const std::string& path, std::string_view /*locale*/,
                                                   int /*options*/) {
  return std::make_shared<Database>(FileStorage::Create(path, state_));
}

RepairReport DBEngine::RepairDatabase(const std::string& path, const MaintenanceProgress& progress,
                                      const FinishRepair& finish) {
  RequireFile(path);
  return RepairFile(path, progress, finish, state_);
}

void DBEngine::PutJournalAside(const std::string& path) {
  dao::PutJournalAside(path);
}

}  // namespace varnlog::dao
