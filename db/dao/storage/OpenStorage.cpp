#include <algorithm>
#include <array>
#include <filesystem>
#include <mutex>
#include <vector>

#include "db/dao/DBEngine.h"
#include "db/dao/ServerLink.h"
#include "db/dao/postgres/LinkFile.h"
#include "db/dao/postgres/OpenServer.h"
#include "db/dao/sqlite/FileChecks.h"
#include "db/dao/sqlite/FileStorage.h"
#include "db/dao/storage/EngineState.h"
#include "platform/Files.h"

namespace varnlog::dao {

namespace {

/// The files that this process has open as logs. Nobody may read one of them in another way: when a process
/// closes any handle of a file, POSIX systems drop all locks that it has on it, those of an open transaction
/// too, and two workstations write at once.
class OpenFiles {
 public:
  void Add(const std::shared_ptr<Storage>& storage) {
    const std::lock_guard guard(mutex_);
    std::erase_if(storages_, [](const auto& each) { return each.expired(); });
    storages_.push_back(storage);
  }
  [[nodiscard]] bool Contains(const std::string& path) {
    const std::lock_guard guard(mutex_);
    const auto file = platform::ToPath(StoragePath(path));
    return std::ranges::any_of(storages_, [&file](const auto& each) {
      const auto storage = each.lock();
      std::error_code error;
      return storage != nullptr && storage->IsOpen() &&
             std::filesystem::equivalent(file, platform::ToPath(StoragePath(storage->Path())), error);
    });
  }

 private:
  std::mutex mutex_;
  std::vector<std::weak_ptr<Storage>> storages_;
};

OpenFiles& AllOpenFiles() {
  static OpenFiles files;
  return files;
}

std::string StartOf(const std::string& path) {
  std::error_code error;
  const auto file =
      platform::File::Open(platform::ToPath(StoragePath(path)), platform::File::Mode::kRead, error);
  if (error) return {};
  std::array<char, kForeignStart> start{};
  const std::size_t length = file.ReadAt(0, start, error);
  return error ? std::string() : std::string(start.data(), length);
}

/// The content of a file of the engine's foreign format, in memory and for reading only; nullptr for a file
/// of any other format.
std::shared_ptr<FileStorage> OpenForeign(const std::string& path, const std::shared_ptr<EngineState>& state) {
  const ForeignFormat& format = state->foreign;
  if (!format.recognises || AllOpenFiles().Contains(path)) return nullptr;
  RequireUsableFile(path, false);
  if (!format.recognises(StartOf(path))) return nullptr;
  auto storage = FileStorage::InMemory(path, state);
  Database target(storage);
  format.load(path, target);
  storage->MakeReadOnly();
  return storage;
}

}  // namespace

bool IsServerLink(const std::string& path) {
  return !AllOpenFiles().Contains(path) && IsLinkStart(StartOf(path));
}

std::shared_ptr<Storage> OpenStorage(const std::string& path, Storage::Mode mode,
                                     const std::shared_ptr<EngineState>& state) {
  if (IsServerLink(path)) return OpenServer(path, mode, state);
  if (mode.readOnly)
    if (auto foreign = OpenForeign(path, state)) return foreign;
  auto file = FileStorage::Open(path, mode, state);
  AllOpenFiles().Add(file);
  return file;
}

}  // namespace varnlog::dao
