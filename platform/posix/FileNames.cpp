#include "platform/FileNames.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace varnlog::platform {
namespace {

std::error_code LastError() {
  return {errno, std::generic_category()};
}

std::error_code RenameOver(const std::filesystem::path& source, const std::filesystem::path& target) {
  return std::rename(source.c_str(), target.c_str()) == 0 ? std::error_code() : LastError();
}

std::error_code RenameToUnused(const std::filesystem::path& source, const std::filesystem::path& target) {
  if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return {};
  if (errno != EINVAL && errno != ENOSYS) return LastError();
  // A file system without that operation: a second name for the file is refused as well when the name is
  // taken, and where there are no second names looking first is all that is left.
  if (link(source.c_str(), target.c_str()) == 0) return RemoveName(source);
  if (errno == EEXIST || access(target.c_str(), F_OK) == 0) {
    return std::make_error_code(std::errc::file_exists);
  }
  return RenameOver(source, target);
}

/// Some file systems have nothing to flush in a folder, and a folder that may be written but not read cannot
/// be opened for it.
bool IsNoFault(int error) {
  return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP || error == EACCES;
}

}  // namespace

std::error_code GiveName(const std::filesystem::path& source, const std::filesystem::path& target,
                         IfTaken ifTaken) {
  return ifTaken == IfTaken::kReplace ? RenameOver(source, target) : RenameToUnused(source, target);
}

std::error_code AddName(const std::filesystem::path& path, const std::filesystem::path& second) {
  return link(path.c_str(), second.c_str()) == 0 ? std::error_code() : LastError();
}

std::error_code RemoveName(const std::filesystem::path& path) {
  return unlink(path.c_str()) == 0 ? std::error_code() : LastError();
}

bool IsLink(const std::filesystem::path& path) {
  std::error_code ignored;
  return std::filesystem::is_symlink(path, ignored);
}

std::filesystem::path BehindLinks(const std::filesystem::path& path) {
  constexpr int kMostLinks = 40;
  std::filesystem::path place = path;
  for (int i = 0; i < kMostLinks && IsLink(place); ++i) {
    std::error_code error;
    const std::filesystem::path target = std::filesystem::read_symlink(place, error);
    if (error) break;
    place = place.parent_path() / target;
  }
  return place;
}

std::error_code FlushFolder(const std::filesystem::path& folder) {
  const std::filesystem::path name = folder.empty() ? std::filesystem::path(".") : folder;
  const int descriptor = open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return IsNoFault(errno) ? std::error_code() : LastError();
  std::error_code error;
  while (fsync(descriptor) != 0) {
    if (errno == EINTR) continue;
    if (!IsNoFault(errno)) error = LastError();
    break;
  }
  close(descriptor);
  return error;
}

}  // namespace varnlog::platform
