#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "platform/Files.h"

namespace varnlog::platform {
namespace {

std::error_code LastError() {
  return {errno, std::generic_category()};
}

int Descriptor(std::intptr_t handle) {
  return static_cast<int>(handle);
}

/// Repeats a call that a signal interrupted.
template <typename Call>
auto Retry(const Call& call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

int OpenFlags(File::Mode mode) {
  switch (mode) {
    case File::Mode::kRead:
      return O_RDONLY;
    case File::Mode::kReadWrite:
      return O_RDWR;
    case File::Mode::kCreateNew:
      return O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW;
  }
  return O_RDONLY;
}

/// A folder can be opened for reading but not read, and opening a pipe may wait for ever.
std::error_code ErrorOfKind(mode_t mode) {
  if (S_ISDIR(mode)) return std::make_error_code(std::errc::is_a_directory);
  if (S_ISFIFO(mode) || S_ISSOCK(mode)) return std::make_error_code(std::errc::not_supported);
  return {};
}

/// Who may read and write files like the model, or make files in it when it is a folder.
mode_t PermissionsLike(const struct stat& model) {
  constexpr mode_t kOwner = S_IRUSR | S_IWUSR;
  constexpr mode_t kGroup = S_IRGRP | S_IWGRP;
  if (!S_ISDIR(model.st_mode)) return (model.st_mode & ACCESSPERMS) | kOwner;
  return (model.st_mode & S_IWGRP) != 0 ? kOwner | kGroup : kOwner;
}

FileIdentity IdentityIn(const struct stat& info) {
  return {static_cast<std::uint64_t>(info.st_dev), static_cast<std::uint64_t>(info.st_ino)};
}

struct flock Range(short type, std::uint64_t offset, std::uint64_t length) {
  struct flock range {};
  range.l_type = type;
  range.l_whence = SEEK_SET;
  range.l_start = static_cast<off_t>(offset);
  range.l_len = static_cast<off_t>(length);
  return range;
}

/// Locks of the open file conflict with other programs' plain record locks, and unlike those they are not
/// lost when this process closes the same file elsewhere. Some network file systems know the plain ones only.
int SetRange(int descriptor, struct flock range) {
  const int result = Retry([&] { return fcntl(descriptor, F_OFD_SETLK, &range); });
  if (result == 0 || errno != EINVAL) return result;
  return Retry([&] { return fcntl(descriptor, F_SETLK, &range); });
}

}  // namespace

File::~File() {
  Close();
}

File::File(File&& other) noexcept : handle_(std::exchange(other.handle_, kNone)) {}

File& File::operator=(File&& other) noexcept {
  if (this != &other) {
    Close();
    handle_ = std::exchange(other.handle_, kNone);
  }
  return *this;
}

void File::Close() {
  if (IsOpen()) close(Descriptor(handle_));
  handle_ = kNone;
}

File File::Open(const std::filesystem::path& path, Mode mode, std::error_code& error, Links links) {
  error.clear();
  struct stat info {};
  if (stat(path.c_str(), &info) == 0) error = ErrorOfKind(info.st_mode);
  File file;
  if (error) return file;
  constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;
  const int flags = OpenFlags(mode) | O_CLOEXEC | (links == Links::kRefuse ? O_NOFOLLOW : 0);
  const int descriptor = Retry([&] { return open(path.c_str(), flags, kPrivate); });
  if (descriptor < 0) {
    error = LastError();
  } else {
    file.handle_ = descriptor;
  }
  return file;
}

std::uint64_t File::Size(std::error_code& error) const {
  struct stat info {};
  error.clear();
  if (fstat(Descriptor(handle_), &info) != 0) error = LastError();
  return error ? 0 : static_cast<std::uint64_t>(info.st_size);
}

std::optional<FileIdentity> File::Identity() const {
  struct stat info {};
  if (fstat(Descriptor(handle_), &info) != 0) return std::nullopt;
  return IdentityIn(info);
}

std::optional<FileIdentity> IdentityOf(const std::filesystem::path& path) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) return std::nullopt;
  return IdentityIn(info);
}

std::size_t File::ReadAt(std::uint64_t offset, std::span<char> buffer, std::error_code& error) const {
  error.clear();
  std::size_t done = 0;
  while (done < buffer.size()) {
    const ssize_t got = Retry([&] {
      return pread(Descriptor(handle_), buffer.data() + done, buffer.size() - done,
                   static_cast<off_t>(offset + done));
    });
    if (got < 0) error = LastError();
    if (got <= 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

void File::WriteAt(std::uint64_t offset, std::string_view bytes, std::error_code& error) {
  error.clear();
  while (!bytes.empty()) {
    const ssize_t put = Retry(
        [&] { return pwrite(Descriptor(handle_), bytes.data(), bytes.size(), static_cast<off_t>(offset)); });
    if (put < 0) {
      error = LastError();
      return;
    }
    bytes.remove_prefix(static_cast<std::size_t>(put));
    offset += static_cast<std::uint64_t>(put);
  }
}

void File::Truncate(std::uint64_t size, std::error_code& error) {
  error.clear();
  if (Retry([&] { return ftruncate(Descriptor(handle_), static_cast<off_t>(size)); }) != 0) {
    error = LastError();
  }
}

void File::Flush(std::error_code& error) {
  error.clear();
  if (Retry([&] { return fsync(Descriptor(handle_)); }) != 0) error = LastError();
}

bool File::IsOwnAndUntouchedFor(std::chrono::seconds time) const {
  struct stat info {};
  if (fstat(Descriptor(handle_), &info) != 0) return false;
  const auto changed = std::chrono::system_clock::from_time_t(info.st_mtime);
  return S_ISREG(info.st_mode) && info.st_uid == geteuid() && info.st_nlink == 1 &&
         std::chrono::system_clock::now() - changed >= time;
}

void File::GiveAccessOf(const std::filesystem::path& model) {
  struct stat info {};
  if (stat(model.c_str(), &info) != 0) return;
  const int descriptor = Descriptor(handle_);
  // Owner first: a change of owner takes permissions away again. Only an administrator may give files away.
  mode_t permissions = PermissionsLike(info);
  if (fchown(descriptor, info.st_uid, info.st_gid) != 0 &&
      fchown(descriptor, static_cast<uid_t>(-1), info.st_gid) != 0) {
    // The file stays with a group of this user, which is not the one that was meant.
    permissions &= ~static_cast<mode_t>(S_IRWXG);
  }
  static_cast<void>(!fchmod(descriptor, permissions));
}

bool File::TryLockRange(std::uint64_t offset, std::uint64_t length, std::error_code& error) {
  error.clear();
  if (SetRange(Descriptor(handle_), Range(F_WRLCK, offset, length)) == 0) return true;
  if (errno != EAGAIN && errno != EACCES) error = LastError();
  return false;
}

void File::UnlockRange(std::uint64_t offset, std::uint64_t length) {
  static_cast<void>(SetRange(Descriptor(handle_), Range(F_UNLCK, offset, length)));
}

File::Solitude File::TrySolitude() {
  const int descriptor = Descriptor(handle_);
  // Somebody who opens the file meanwhile is held off, and this process is told so by a signal. The usual one
  // ends a program that does not expect it; this one is ignored unless somebody listens for it.
  if (fcntl(descriptor, F_SETSIG, SIGURG) != 0) return Solitude::kUnsupported;
  if (fcntl(descriptor, F_SETLEASE, F_WRLCK) == 0) return Solitude::kAlone;
  return errno == EAGAIN ? Solitude::kShared : Solitude::kUnsupported;
}

void File::EndSolitude() {
  static_cast<void>(fcntl(Descriptor(handle_), F_SETLEASE, F_UNLCK));
}

}  // namespace varnlog::platform
