#include <array>

#include "db/dao/DBEngine.h"
#include "db/dao/OpenFiles.h"
#include "db/dao/ServerLink.h"
#include "db/dao/postgres/LinkFile.h"
#include "db/dao/postgres/OpenServer.h"
#include "db/dao/sqlite/FileChecks.h"
#include "db/dao/sqlite/FileStorage.h"
#include "db/dao/storage/EngineState.h"
#include "platform/Files.h"

namespace varnlog::dao {

namespace {

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
  if (!format.recognises || IsOpenHere(path)) return nullptr;
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
  return !IsOpenHere(path) && IsLinkStart(StartOf(path));
}

std::shared_ptr<Storage> OpenStorage(const std::string& path, Storage::Mode mode,
                                     const std::shared_ptr<EngineState>& state) {
  if (IsServerLink(path)) return OpenServer(path, mode, state);
  if (mode.readOnly)
    if (auto foreign = OpenForeign(path, state)) return foreign;
  return FileStorage::Open(path, mode, state);
}

}  // namespace varnlog::dao
