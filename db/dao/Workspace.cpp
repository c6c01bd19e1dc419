#include <exception>
#include <utility>

#include "db/dao/DBEngine.h"
#include "db/dao/storage/Storage.h"

namespace varnlog::dao {

Workspace::Workspace(std::string name, std::string user, std::shared_ptr<EngineState> state)
    : name_(std::move(name)), user_(std::move(user)), state_(std::move(state)) {}

Workspace::~Workspace() = default;

std::vector<std::shared_ptr<Storage>> Workspace::OpenStorages() {
  std::vector<std::shared_ptr<Storage>> open;
  for (const auto& each : storages_)
    if (auto storage = each.lock(); storage != nullptr && storage->IsOpen())
      open.push_back(std::move(storage));
  return open;
}

std::shared_ptr<Database> Workspace::OpenDatabase(const std::string& path, bool exclusive, bool readOnly,
                                                  std::string_view /*connect*/) {
  RequireOpen();
  auto storage = OpenStorage(path, {.exclusive = exclusive, .readOnly = readOnly}, state_);
  if (inTransaction_) storage->BeginWork();
  std::erase_if(storages_, [](const auto& each) { return each.expired(); });
  storages_.push_back(storage);
  return std::make_shared<Database>(std::move(storage));
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
  std::vector<std::shared_ptr<Storage>> begun;
  try {
    for (auto& storage : OpenStorages()) {
      storage->BeginWork();
      begun.push_back(std::move(storage));
    }
  } catch (const std::exception&) {
    for (const auto& storage : begun) storage->RollbackWork();
    throw;
  }
  inTransaction_ = true;
}

// After a failure nothing of the failed database's changes is in its file.
void Workspace::CommitTrans() {
  RequireTransaction();
  inTransaction_ = false;
  const auto storages = OpenStorages();
  for (std::size_t i = 0; i < storages.size(); ++i) {
    try {
      if (storages[i]->InWork()) storages[i]->CommitWork();
    } catch (const std::exception&) {
      for (std::size_t rest = i + 1; rest < storages.size(); ++rest) storages[rest]->RollbackWork();
      throw;
    }
  }
}

void Workspace::Rollback() {
  RequireTransaction();
  inTransaction_ = false;
  for (const auto& storage : OpenStorages()) storage->RollbackWork();
}

void Workspace::Close() {
  RequireOpen();
  for (const auto& storage : OpenStorages()) storage->Close();
  storages_.clear();
  inTransaction_ = false;
  closed_ = true;
}

}  // namespace varnlog::dao
