#include "db/dao/DBEngine.h"

#include <algorithm>
#include <utility>

#include "db/dao/Workgroup.h"
#include "db/dao/sqlite/Connection.h"
#include "db/dao/sqlite/FileChecks.h"
#include "db/dao/sqlite/Maintenance.h"
#include "db/dao/sqlite/Schema.h"

namespace varnlog::dao {

namespace {

// Writing is needed to undo an interrupted change, but a file on a read-only medium can be copied too.
std::shared_ptr<Connection> OpenForCopy(const std::string& path, const std::shared_ptr<EngineState>& state) {
  try {
    return Connection::Open(path, {.exclusive = false, .readOnly = false}, state);
  } catch (const EngineError& error) {
    if (error.number() != ErrorNumber::kNoPermission) throw;
    return Connection::Open(path, {.exclusive = false, .readOnly = true}, state);
  }
}

}  // namespace

DBEngine::DBEngine() : state_(std::make_shared<EngineState>()) {}
DBEngine::~DBEngine() = default;

DBEngine& DBEngine::Instance() {
  static DBEngine engine;
  return engine;
}

void DBEngine::SetForeignFormat(ForeignFormat format) {
  state_->foreign = std::move(format);
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
  return std::make_shared<Database>(Connection::Create(path, state_));
}

void DBEngine::CompactDatabase(const std::string& source, const std::string& target, int /*options*/,
                               const MaintenanceProgress& progress) {
  const auto connection = OpenForCopy(source, state_);
  RequireFreePath(target);
  CopyCompacted(*connection, target, progress, state_);
}

void DBEngine::RepairDatabase(const std::string& path, const MaintenanceProgress& progress) {
  RepairFile(path, progress, state_);
}

}  // namespace varnlog::dao
