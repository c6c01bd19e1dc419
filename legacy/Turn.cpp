#include "legacy/Turn.h"

#include "platform/SafeFile.h"

namespace varnlog::legacy {

using platform::File;

Turn::Turn(const std::filesystem::path& log) : path_(std::filesystem::path(log) += ".turn") {
  do {
    std::error_code error = Open(log);
    isMine_ = error || platform::TryHold(file_, error) || error;
  } while (isMine_ && file_.IsOpen() && !HasItsName());
}

Turn::~Turn() {
  // Before the lock goes: whoever opened the file meanwhile sees that it has lost its name.
  if (isMine_ && file_.IsOpen()) static_cast<void>(platform::RemoveFile(path_));
}

std::error_code Turn::Open(const std::filesystem::path& log) {
  std::error_code error;
  do {
    file_ = File::Open(path_, File::Mode::kReadWrite, error, File::Links::kRefuse);
    if (error != std::errc::no_such_file_or_directory) return error;
    file_ = File::Open(path_, File::Mode::kCreateNew, error);
    if (!error) file_.GiveAccessOf(log);
  } while (error == std::errc::file_exists);
  return error;
}

bool Turn::HasItsName() const {
  return platform::IdentityOf(path_) == file_.Identity();
}

}  // namespace varnlog::legacy
