#include "legacy/ChangePlaces.h"

#include "legacy/OldFile.h"
#include "platform/SafeFile.h"
#include "platform/Sha256.h"

namespace varnlog::legacy {
namespace {

namespace fs = std::filesystem;

fs::path WithSuffix(fs::path path, const char* suffix) {
  return path += suffix;
}

}  // namespace

ConversionPaths ConversionPaths::For(const fs::path& log) {
  const fs::path stem = log.parent_path() / log.stem();
  return {log, WithSuffix(stem, ".jet.mdb"), WithSuffix(log, ".converting")};
}

std::error_code RemoveGrowing(const fs::path& growing) {
  // A copy that was interrupted itself never got the name that it was made for.
  platform::SweepUnfinished(growing);
  return platform::RemoveFile(growing, {"-journal"});
}

bool IsKeptNameUsable(const ConversionPaths& paths, const std::string& origin) {
  std::error_code error;
  if (!fs::exists(fs::symlink_status(paths.kept, error))) return true;
  if (platform::SameFile(paths.log, paths.kept)) return true;
  const auto content = ReadOldFile(paths.kept, error);
  return content && platform::Sha256Hex(*content) == origin;
}

bool CanBeReplaced(const fs::path& log) {
  std::error_code error;
  const fs::path file = fs::canonical(log, error);
  return !error && platform::IsWritable(file) && platform::IsWritable(file.parent_path());
}

std::error_code ChangePlaces(const ConversionPaths& paths) {
  std::error_code error;
  // The second name is on the disk before the first one goes to another file.
  if (!fs::exists(paths.kept, error)) error = platform::GiveSecondName(paths.log, paths.kept);
  return error ? error : platform::RenameFile(paths.growing, paths.log, platform::IfTaken::kReplace);
}

std::optional<fs::path> LockFileOf(const fs::path& log) {
  for (const char* ending : {".ldb", ".LDB"}) {
    std::error_code error;
    fs::path lockFile = fs::path(log).replace_extension(ending);
    if (fs::exists(lockFile, error)) return lockFile;
  }
  return std::nullopt;
}

bool MayBeOpen(const fs::path& lockFile) {
  std::error_code error;
  platform::File file = platform::File::Open(lockFile, platform::File::Mode::kReadWrite, error);
  if (error) return error != std::errc::no_such_file_or_directory;
  const auto solitude = file.TrySolitude();
  if (solitude != platform::File::Solitude::kUnsupported) {
    return solitude != platform::File::Solitude::kAlone;
  }
  // The old program locks bytes of it as long as it runs.
  constexpr std::uint64_t kAnyByte = 1ULL << 40U;
  return !file.TryLockRange(0, kAnyByte, error) || error;
}

}  // namespace varnlog::legacy
