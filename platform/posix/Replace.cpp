#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "platform/Files.h"

namespace varnlog::platform {
namespace {

std::error_code LastError() {
  return {errno, std::generic_category()};
}

std::filesystem::path FolderOf(const std::filesystem::path& path) {
  return path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
}

std::error_code RenameOver(const std::filesystem::path& source, const std::filesystem::path& target) {
  return std::rename(source.c_str(), target.c_str()) == 0 ? std::error_code() : LastError();
}

std::error_code RenameToUnused(const std::filesystem::path& source, const std::filesystem::path& target) {
  if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return {};
  if (errno != EINVAL && errno != ENOSYS) return LastError();
  // A file system without that operation: a second name for the file is refused as well when the name is
  // taken, and where there are no second names looking first is all that is left.
  if (link(source.c_str(), target.c_str()) == 0) {
    unlink(source.c_str());
    return {};
  }
  if (errno == EEXIST || access(target.c_str(), F_OK) == 0) {
    return std::make_error_code(std::errc::file_exists);
  }
  return RenameOver(source, target);
}

/// A file beside `target` that is to take its name, removed again unless it did.
class Successor {
 public:
  Successor(const std::filesystem::path& target, std::error_code& error) : target_(target) {
    static std::atomic<unsigned> counter = 0;
    // A name of an earlier process of the same number may have been left by a crash: the next one is taken.
    do {
      path_ = target;
      path_ += ".new-" + std::to_string(getpid()) + "-" + std::to_string(counter++);
      file_ = File::Open(path_, File::Mode::kCreateNew, error);
    } while (error == std::errc::file_exists);
    if (error) path_.clear();
  }
  ~Successor() {
    if (!path_.empty()) unlink(path_.c_str());
  }
  Successor(const Successor&) = delete;
  Successor& operator=(const Successor&) = delete;

  [[nodiscard]] File& file() { return file_; }
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  /// Flushes the content and gives the file its name.
  [[nodiscard]] std::error_code TakePlace(bool overwrite) {
    std::error_code error;
    file_.Flush(error);
    if (error) return error;
    file_.Close();
    error = RenameFile(path_, target_, overwrite);
    if (!error) path_.clear();
    return error;
  }

 private:
  std::filesystem::path target_;
  std::filesystem::path path_;
  File file_;
};

/// The file that a chain of links ends at, so that a replacement leaves the links in place.
std::filesystem::path BehindLinks(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::is_symlink(path, error)) return path;
  std::filesystem::path resolved = std::filesystem::weakly_canonical(path, error);
  return error ? path : resolved;
}

/// Owner first: a change of owner takes permissions away again. Only an administrator may give files away,
/// and whoever may not keeps at least the group where the system allows it.
void CopyOwnerAndMode(const struct stat& from, const std::filesystem::path& to) {
  if (chown(to.c_str(), from.st_uid, from.st_gid) != 0) {
    static_cast<void>(!chown(to.c_str(), static_cast<uid_t>(-1), from.st_gid));
  }
  static_cast<void>(!chmod(to.c_str(), from.st_mode & 07777U));
}

/// A copy is not open to more people than its source, but always to its owner.
void LimitModeTo(const std::filesystem::path& source, const std::filesystem::path& copy) {
  struct stat from {};
  struct stat made {};
  if (stat(source.c_str(), &from) != 0 || stat(copy.c_str(), &made) != 0) return;
  static_cast<void>(!chmod(copy.c_str(), made.st_mode & (from.st_mode | S_IRUSR | S_IWUSR)));
}

std::error_code CopyContent(const File& source, File& target) {
  std::error_code error;
  std::vector<char> buffer(1U << 18U);
  std::uint64_t offset = 0;
  for (;;) {
    const std::size_t got = source.ReadAt(offset, buffer, error);
    if (error || got == 0) return error;
    target.WriteAt(offset, {buffer.data(), got}, error);
    if (error) return error;
    offset += got;
  }
}

}  // namespace

std::error_code ReplaceFile(const std::filesystem::path& path, std::string_view content) {
  const std::filesystem::path target = BehindLinks(path);
  struct stat old {};
  const bool exists = stat(target.c_str(), &old) == 0;
  if (exists && S_ISDIR(old.st_mode)) return std::make_error_code(std::errc::is_a_directory);
  // The folder alone decides whether a rename is allowed; a file that may not be written must still be kept.
  if (exists && access(target.c_str(), W_OK) != 0) return LastError();

  std::error_code error;
  Successor successor(target, error);
  if (error) return error;
  if (exists) CopyOwnerAndMode(old, successor.path());
  successor.file().WriteAt(0, content, error);
  if (error) return error;
  return successor.TakePlace(true);
}

std::error_code CopyWholeFile(const std::filesystem::path& source, const std::filesystem::path& target,
                              bool overwrite) {
  std::error_code error;
  const File from = File::Open(source, File::Mode::kRead, error);
  if (error) return error;
  // Asked first only to spare a long copy; what counts is the rename.
  if (!overwrite && access(target.c_str(), F_OK) == 0) return std::make_error_code(std::errc::file_exists);
  Successor successor(BehindLinks(target), error);
  if (error) return error;
  LimitModeTo(source, successor.path());
  error = CopyContent(from, successor.file());
  if (error) return error;
  return successor.TakePlace(overwrite);
}

std::error_code RenameFile(const std::filesystem::path& source, const std::filesystem::path& target,
                           bool overwrite) {
  const std::error_code error = overwrite ? RenameOver(source, target) : RenameToUnused(source, target);
  if (!error) FlushFolder(FolderOf(target));
  return error;
}

void FlushFolder(const std::filesystem::path& folder) {
  const std::filesystem::path name = folder.empty() ? std::filesystem::path(".") : folder;
  const int descriptor = open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  fsync(descriptor);
  close(descriptor);
}

}  // namespace varnlog::platform
