#include "db/dao/sqlite/TemporaryCopy.h"

#include "db/dao/sqlite/FileChecks.h"
#include "db/dao/sqlite/Maintenance.h"
#include "db/dao/sqlite/StorageError.h"

namespace varnlog::dao {

namespace {

namespace fs = std::filesystem;
using platform::File;

// Shorter than a page, so that the storage does not count it as one.
constexpr std::string_view kMark = "\nvarnlog: temporary copy of a log\n";

bool HasMark(const File& file) {
  std::error_code error;
  const std::uint64_t size = file.Size(error);
  if (error || size < kMark.size()) return false;
  std::string end(kMark.size(), '\0');
  return file.ReadAt(size - kMark.size(), end, error) == kMark.size() && end == kMark;
}

[[noreturn]] void ThrowExists(const std::string& path) {
  throw EngineError(ErrorNumber::kFileExists, FileText("The file ", path, " exists already."));
}

void RemoveLeftOver(const fs::path& path, const std::string& name) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(path, error);
  if (!fs::exists(status)) return;
  if (!fs::is_regular_file(status)) ThrowExists(name);
  File left = File::Open(path, File::Mode::kReadWrite, error);
  if (error || !HasMark(left)) ThrowExists(name);
  const bool isMine = platform::TryHold(left, error) && !error;
  if (!isMine || left.Identity() != platform::IdentityOf(path))
    throw EngineError(ErrorNumber::kFileInUse,
                      FileText("The file ", name, " is in use: another log is being compacted."));
  error = platform::RemoveFile(path, {"-journal"});
  if (error) ThrowFileError(error, name);
}

}  // namespace

TemporaryCopy::TemporaryCopy(const std::string& path, const std::string& source)
    : path_((RemoveLeftOver(platform::ToPath(StoragePath(path)), path), platform::ToPath(StoragePath(path)))),
      file_(path_, error_, platform::ToPath(StoragePath(source))) {
  if (error_) ThrowFileError(error_, path);
}

TemporaryCopy::~TemporaryCopy() {
  if (IsOwn()) static_cast<void>(platform::RemoveFile(path_, {"-journal"}));
}

void TemporaryCopy::TakeName() {
  const std::string name = platform::FromPath(path_);
  const std::uint64_t size = file_.file().Size(error_);
  if (!error_) file_.file().WriteAt(size, kMark, error_);
  if (!error_) error_ = file_.TakePlace(platform::IfTaken::kFail);
  if (error_ == std::errc::file_exists) ThrowExists(name);
  if (file_.path().empty()) identity_ = file_.file().Identity();
  if (error_) ThrowFileError(error_, name);
}

bool TemporaryCopy::IsOwn() const {
  return identity_.has_value() && identity_ == platform::IdentityOf(path_);
}

}  // namespace varnlog::dao
