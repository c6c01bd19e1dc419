#include <exception>
#include <utility>

#include "db/dao/DBEngine.h"
#include "db/dao/sqlite/Connection.h"

namespace varnlog::dao {

Workspace::Workspace(std::string name, std::string user, std::shared_ptr<EngineState> state)
    : name_(std::move(name)), user_(std::move(user)), state_(std::move(state)) {}

Workspace::~Workspace() = default;

std::vector<std::shared_ptr<Connection>> Workspace::OpenConnections() {
  std::vector<std::shared_ptr<Connection>> open;
  for (const auto& each : connections_)
    if (auto connection = each.lock(); connection != nullptr && connection->IsOpen())
      open.push_back(std::move(connection));
  return open;
}

std::shared_ptr<Database> Workspace::OpenDatabase(const std::string& path, bool exclusive, bool readOnly,
                                                  std::string_view /*connect*/) {
  RequireOpen();
  auto connection = readOnly ? OpenForeign(path, state_) : nullptr;
  if (connection == nullptr)
    connection = Connection::Open(path, {.exclusive = exclusive, .readOnly = readOnly}, state_);
  if (inTransaction_) connection->BeginWork();
  std::erase_if(connections_, [](const auto& each) { return each.expired(); });
  connections_.push_back(connection);
  return std::make_shared<Database>(std::move(connection));
}

void Workspace::RequireOpen() const {
  if (closed_) throw EngineError(ErrorNumber::kObjectInvalid, "The workspace '" + name_ + "' was closed.");
}

void Workspace::RequireTransaction() const {
  RequireOpen();
  if (!inTransaction_) throw EngineError(ErrorNumber::kInvalidTransaction, "There is no open transaction.");
}

void Workspace::BeginTrans() {
  RequireOpen();
  if (inTransaction_) throw EngineError(ErrorNumber::kInvalidTransaction, "A transaction is already open.");
  std::vector<std::shared_ptr<Connection>> begun;
  try {
    for (auto& connection : OpenConnections()) {
      connection->BeginWork();
      begun.push_back(std::move(connection));
    }
  } catch (const std::exception&) {
    for (const auto& connection : begun) connection->RollbackWork();
    throw;
  }
  inTransaction_ = true;
}

// After a failure nothing of the failed database's changes is in its file.
void Workspace::CommitTrans() {
  RequireTransaction();
  inTransaction_ = false;
  const auto connections = OpenConnections();
  for (std::size_t i = 0; i < connections.size(); ++i) {
    try {
      if (connections[i]->InWork()) connections[i]->CommitWork();
    } catch (const std::exception&) {
      for (std::size_t rest = i + 1; rest < connections.size(); ++rest) connections[rest]->RollbackWork();
      throw;
    }
  }
}

void Workspace::Rollback() {
  RequireTransaction();
  inTransaction_ = false;
  for (const auto& connection : OpenConnections()) connection->RollbackWork();
}

void Workspace::Close() {
  RequireOpen();
  for (const auto& connection : OpenConnections()) connection->Close();
  connections_.clear();
  inTransaction_ = false;
  closed_ = true;
}

}  // namespace varnlog::dao
