#include "db/dao/sqlite/FileStorage.h"

#include <exception>
#include <utility>

#include "db/dao/sqlite/FileChecks.h"
#include "db/dao/sqlite/rows/DistinctRows.h"
#include "db/dao/sqlite/rows/OrderedIds.h"
#include "db/dao/sqlite/rows/Select.h"
#include "platform/SafeFile.h"

namespace varnlog::dao {

FileStorage::FileStorage(const std::string& path, Mode mode, const std::shared_ptr<EngineState>& state)
    : Storage(path, mode, state),
      file_(path, state),
      selects_(std::make_unique<SelectCache>()),
      distinct_(std::make_unique<DistinctRows>()),
      ordered_(std::make_unique<OrderedIds>()) {}

FileStorage::~FileStorage() {
  Close();
}

std::shared_ptr<FileStorage> FileStorage::Open(const std::string& path, Mode mode,
                                               const std::shared_ptr<EngineState>& state) {
  std::shared_ptr<FileStorage> storage(new FileStorage(path, mode, state));
  storage->file_.Open({.exclusive = mode.exclusive, .readOnly = mode.readOnly});
  std::erase_if(state->storages, [](const auto& each) { return each.expired(); });
  state->storages.push_back(storage);
  return storage;
}

std::shared_ptr<FileStorage> FileStorage::Create(const std::string& path,
                                                 const std::shared_ptr<EngineState>& state) {
  RequireFreePath(path);
  PutJournalAside(path);
  std::error_code error;
  // Claims the name: of two programs that make the same file one gets the error.
  static_cast<void>(
      platform::File::Open(platform::ToPath(StoragePath(path)), platform::File::Mode::kCreateNew, error));
  if (error) throw EngineError(ErrorNumber::kNoPermission, FileText("The file ", path, " cannot be made."));
  try {
    return CreateIn(path, state);
  } catch (const std::exception&) {
    static_cast<void>(platform::RemoveFile(platform::ToPath(StoragePath(path))));
    throw;
  }
}

std::shared_ptr<FileStorage> FileStorage::CreateIn(const std::string& emptyFile,
                                                   const std::shared_ptr<EngineState>& state) {
  std::shared_ptr<FileStorage> storage(new FileStorage(emptyFile, {}, state));
  storage->file_.OpenEmpty();
  state->storages.push_back(storage);
  return storage;
}

std::shared_ptr<FileStorage> FileStorage::InMemory(const std::string& path,
                                                   const std::shared_ptr<EngineState>& state) {
  std::shared_ptr<FileStorage> storage(new FileStorage(path, {}, state));
  storage->file_.OpenInMemory();
  return storage;
}

void FileStorage::Close() noexcept {
  if (!IsOpen()) return;
  tables_.clear();
  ForgetJournal();
  file_.Close();
}

void FileStorage::ForgetSchema() {
  tables_.clear();
  selects_ = std::make_unique<SelectCache>();
}

void FileStorage::ApplyOptions() {
  file_.SetCache(inWork_);
  if (!file_.InTransaction()) file_.SetSync(State()->options.implicitCommitSync);
}

void FileStorage::Refresh() {
  file_.WriteAhead();
  file_.ReleaseMemory();
  file_.Watch().Forget();
}

}  // namespace varnlog::dao
