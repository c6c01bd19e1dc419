// Stands between the program and the C library for every call on files. Each does what the recorder's verdict
// says, asks the system itself, and records what was done.
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

#include "tests/faults/shim/Recorder.h"

namespace {

using namespace varnlog::faults;

template <typename Function>
Function Real(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

int Fail(int error) {
  errno = error == kHalf ? EIO : error;
  return -1;
}

StepHead Step(const Verdict& verdict, Call call) {
  return {.number = verdict.number, .call = call};
}

/// A call on a path that leaves no open file behind.
template <typename Do>
int OnPath(Call call, const char* path, const Do& real, const char* newPath = "") {
  Recorder& recorder = Recorder::Instance();
  WatchedPath from;
  WatchedPath to;
  if (!recorder.Watches(path, from)) return static_cast<int>(real());
  static_cast<void>(*newPath != '\0' && recorder.Watches(newPath, to));
  const Verdict verdict = recorder.Ask(call);
  if (verdict.error != 0) return Fail(verdict.error);
  const int result = static_cast<int>(real());
  if (result == 0 || !Changes(call)) recorder.Record(Step(verdict, call), from.text, to.text);
  return result;
}

/// A call on an open file that moves no bytes.
template <typename Do>
int OnFile(Call call, int descriptor, std::int64_t offset, const Do& real) {
  Recorder& recorder = Recorder::Instance();
  if (!recorder.Watches(descriptor)) return static_cast<int>(real());
  const Verdict verdict = recorder.Ask(call);
  if (verdict.error != 0) return Fail(verdict.error);
  const int result = static_cast<int>(real());
  StepHead step = Step(verdict, call);
  step.file = FileNumber(descriptor);
  step.offset = static_cast<std::uint64_t>(offset);
  if (result >= 0) recorder.Record(step, recorder.PathOf(descriptor));
  return result;
}

Call OpeningCall(const char* path, int flags) {
  if ((flags & O_CREAT) != 0 && syscall(SYS_faccessat, AT_FDCWD, path, F_OK) != 0) return Call::kCreate;
  return (flags & O_TRUNC) != 0 ? Call::kEmpty : Call::kOpen;
}

/// `real` opens the file and answers with its descriptor.
template <typename Do>
int Opening(const char* path, int flags, const Do& real) {
  Recorder& recorder = Recorder::Instance();
  WatchedPath watched;
  if (!recorder.Watches(path, watched)) {
    const int descriptor = real();
    recorder.Forget(descriptor);
    return descriptor;
  }
  const Call call = OpeningCall(path, flags);
  const Verdict verdict = recorder.Ask(call);
  if (verdict.error != 0) return Fail(verdict.error);
  const int descriptor = real();
  if (descriptor < 0) return descriptor;
  recorder.Remember(descriptor, watched);
  StepHead step = Step(verdict, call);
  step.file = FileNumber(descriptor);
  recorder.Record(step, watched.text);
  return descriptor;
}

int OpenFile(int folder, const char* path, int flags, mode_t mode) {
  const auto real = [&] { return static_cast<int>(syscall(SYS_openat, folder, path, flags, mode)); };
  // Names within an open folder do not occur where the program changes something.
  return folder == AT_FDCWD || path[0] == '/' ? Opening(path, flags, real) : real();
}

mode_t ModeOf(int flags, va_list list) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(list, mode_t) : 0;
}

FILE* OpenStream(const char* path, const char* mode) {
  using Open = FILE* (*)(const char*, const char*);
  static const Open real = Real<Open>("fopen64");
  const int flags = mode[0] == 'w' ? O_CREAT | O_TRUNC : mode[0] == 'a' ? O_CREAT : 0;
  FILE* stream = nullptr;
  Opening(path, flags, [&] {
    stream = real(path, mode);
    return stream == nullptr ? -1 : fileno(stream);
  });
  return stream;
}

template <typename Do>
ssize_t Reading(int descriptor, const Do& real) {
  Recorder& recorder = Recorder::Instance();
  if (!recorder.Watches(descriptor)) return real();
  const Verdict verdict = recorder.Ask(Call::kRead);
  if (verdict.error != 0) return Fail(verdict.error);
  const ssize_t got = real();
  recorder.Record(Step(verdict, Call::kRead), recorder.PathOf(descriptor));
  return got;
}

/// `real` puts the number of bytes that it is given; `offset` is where, or -1 for the file's own position.
template <typename Do>
ssize_t Writing(int descriptor, const void* data, std::size_t size, std::int64_t offset, const Do& real) {
  Recorder& recorder = Recorder::Instance();
  if (!recorder.Watches(descriptor)) return real(size);
  const Verdict verdict = recorder.Ask(Call::kWrite);
  if (verdict.error != 0 && verdict.error != kHalf) return Fail(verdict.error);
  if (offset < 0) offset = syscall(SYS_lseek, descriptor, 0, SEEK_CUR);
  const ssize_t put = real(verdict.error == kHalf ? std::max<std::size_t>(size / 2, 1) : size);
  if (put < 0) return put;
  StepHead step = Step(verdict, Call::kWrite);
  step.file = FileNumber(descriptor);
  step.offset = static_cast<std::uint64_t>(offset);
  step.bytes = static_cast<std::uint32_t>(put);
  recorder.Record(step, recorder.PathOf(descriptor), "", data);
  return put;
}

int Look(const char* path, struct stat* info, int flags) {
  return OnPath(Call::kLook, path, [&] { return syscall(SYS_newfstatat, AT_FDCWD, path, info, flags); });
}

int Look(int descriptor, struct stat* info) {
  return OnFile(Call::kLook, descriptor, 0,
                [&] { return syscall(SYS_newfstatat, descriptor, "", info, AT_EMPTY_PATH); });
}

int Rename(const char* from, const char* to, unsigned flags) {
  return OnPath(
      Call::kRename, from, [&] { return syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, flags); }, to);
}

int Remove(const char* path, int flags) {
  return OnPath(Call::kRemove, path, [&] { return syscall(SYS_unlinkat, AT_FDCWD, path, flags); });
}

int Lock(int descriptor, int command, void* argument) {
  const auto real = [&] { return syscall(SYS_fcntl, descriptor, command, argument); };
  const bool locks = command == F_SETLK || command == F_SETLKW || command == F_OFD_SETLK ||
                     command == F_OFD_SETLKW || command == F_SETLEASE;
  return locks ? OnFile(Call::kLock, descriptor, 0, real) : static_cast<int>(real());
}

int Close(int descriptor) {
  const int result = OnFile(Call::kClose, descriptor, 0, [] { return 0; });
  const int error = errno;
  Recorder::Instance().Forget(descriptor);
  if (syscall(SYS_close, descriptor) != 0) return -1;  // a close that fails has closed all the same
  errno = error;
  return result;
}

}  // namespace

// The C library's names, with and without the 64 of systems with two sizes of offsets.
extern "C" {

int open(const char* path, int flags, ...) {
  va_list list;
  va_start(list, flags);
  const mode_t mode = ModeOf(flags, list);
  va_end(list);
  return OpenFile(AT_FDCWD, path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) {
  va_list list;
  va_start(list, flags);
  const mode_t mode = ModeOf(flags, list);
  va_end(list);
  return OpenFile(folder, path, flags, mode);
}
FILE* fopen(const char* path, const char* mode) {
  return OpenStream(path, mode);
}
FILE* fopen64(const char* path, const char* mode) {
  return OpenStream(path, mode);
}
int fclose(FILE* stream) {
  using Function = int (*)(FILE*);
  static const auto real = Real<Function>("fclose");
  const int descriptor = fileno(stream);
  const int result = OnFile(Call::kClose, descriptor, 0, [] { return 0; });
  Recorder::Instance().Forget(descriptor);
  return real(stream) == 0 ? result : EOF;
}
int close(int descriptor) {
  return Close(descriptor);
}

ssize_t read(int descriptor, void* buffer, size_t size) {
  return Reading(descriptor, [&] { return syscall(SYS_read, descriptor, buffer, size); });
}
ssize_t pread(int descriptor, void* buffer, size_t size, off_t offset) {
  return Reading(descriptor, [&] { return syscall(SYS_pread64, descriptor, buffer, size, offset); });
}
ssize_t write(int descriptor, const void* data, size_t size) {
  return Writing(descriptor, data, size, -1,
                 [&](size_t part) { return syscall(SYS_write, descriptor, data, part); });
}
ssize_t pwrite(int descriptor, const void* data, size_t size, off_t offset) {
  return Writing(descriptor, data, size, offset,
                 [&](size_t part) { return syscall(SYS_pwrite64, descriptor, data, part, offset); });
}
// A stream writes what it has gathered and what it is given in one call; the first part is enough for it.
ssize_t writev(int descriptor, const iovec* parts, int count) {
  for (; count > 0 && parts->iov_len == 0; ++parts) --count;
  return count == 0 ? 0 : write(descriptor, parts->iov_base, parts->iov_len);
}
// Whoever copies by these goes on with read and write where a file system does not have them.
ssize_t sendfile(int, int, off_t*, size_t) noexcept {
  return Fail(EINVAL);
}
ssize_t copy_file_range(int, off64_t*, int, off64_t*, size_t, unsigned) {
  return Fail(ENOSYS);
}

int ftruncate(int descriptor, off_t size) noexcept {
  return OnFile(Call::kTruncate, descriptor, size, [&] { return syscall(SYS_ftruncate, descriptor, size); });
}
int fsync(int descriptor) {
  return OnFile(Call::kSync, descriptor, 0, [&] { return syscall(SYS_fsync, descriptor); });
}
int fdatasync(int descriptor) {
  return OnFile(Call::kSync, descriptor, 0, [&] { return syscall(SYS_fdatasync, descriptor); });
}

int rename(const char* from, const char* to) noexcept {
  return Rename(from, to, 0);
}
int renameat2(int, const char* from, int, const char* to, unsigned flags) noexcept {
  return Rename(from, to, flags);
}
int link(const char* from, const char* to) noexcept {
  return OnPath(
      Call::kLink, from, [&] { return syscall(SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0); }, to);
}
int unlink(const char* path) noexcept {
  return Remove(path, 0);
}
int rmdir(const char* path) noexcept {
  return Remove(path, AT_REMOVEDIR);
}
int remove(const char* path) noexcept {
  struct stat info {};
  const bool isFolder =
      syscall(SYS_newfstatat, AT_FDCWD, path, &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(info.st_mode);
  return Remove(path, isFolder ? AT_REMOVEDIR : 0);
}
int mkdir(const char* path, mode_t mode) noexcept {
  return OnPath(Call::kMakeFolder, path, [&] { return syscall(SYS_mkdirat, AT_FDCWD, path, mode); });
}

int stat(const char* path, struct stat* info) noexcept {
  return Look(path, info, 0);
}
int lstat(const char* path, struct stat* info) noexcept {
  return Look(path, info, AT_SYMLINK_NOFOLLOW);
}
int fstat(int descriptor, struct stat* info) noexcept {
  return Look(descriptor, info);
}
int stat64(const char* path, struct stat64* info) noexcept {
  return Look(path, reinterpret_cast<struct stat*>(info), 0);
}
int lstat64(const char* path, struct stat64* info) noexcept {
  return Look(path, reinterpret_cast<struct stat*>(info), AT_SYMLINK_NOFOLLOW);
}
int fstat64(int descriptor, struct stat64* info) noexcept {
  return Look(descriptor, reinterpret_cast<struct stat*>(info));
}
int access(const char* path, int mode) noexcept {
  return OnPath(Call::kLook, path, [&] { return syscall(SYS_faccessat, AT_FDCWD, path, mode); });
}

DIR* fdopendir(int descriptor) {
  using Function = DIR* (*)(int);
  static const auto real = Real<Function>("fdopendir");
  DIR* folder = nullptr;
  OnFile(Call::kList, descriptor, 0, [&] {
    folder = real(descriptor);
    return folder == nullptr ? -1 : 0;
  });
  return folder;
}
dirent* readdir(DIR* folder) {
  using Function = dirent* (*)(DIR*);
  static const auto real = Real<Function>("readdir");
  dirent* entry = nullptr;
  OnFile(Call::kList, dirfd(folder), 0, [&] {
    entry = real(folder);
    return 0;
  });
  return entry;
}

int chmod(const char* path, mode_t mode) noexcept {
  return OnPath(Call::kMode, path, [&] { return syscall(SYS_fchmodat, AT_FDCWD, path, mode); });
}
int fchmod(int descriptor, mode_t mode) noexcept {
  return OnFile(Call::kMode, descriptor, 0, [&] { return syscall(SYS_fchmod, descriptor, mode); });
}
int chown(const char* path, uid_t user, gid_t group) noexcept {
  return OnPath(Call::kMode, path, [&] { return syscall(SYS_fchownat, AT_FDCWD, path, user, group, 0); });
}
int fchown(int descriptor, uid_t user, gid_t group) noexcept {
  return OnFile(Call::kMode, descriptor, 0, [&] { return syscall(SYS_fchown, descriptor, user, group); });
}

int fcntl(int descriptor, int command, ...) {
  va_list list;
  va_start(list, command);
  void* const argument = va_arg(list, void*);
  va_end(list);
  return Lock(descriptor, command, argument);
}

int open64(const char*, int, ...) __attribute__((alias("open")));
int openat64(int, const char*, int, ...) __attribute__((alias("openat")));
ssize_t pread64(int, void*, size_t, off64_t) __attribute__((alias("pread")));
ssize_t pwrite64(int, const void*, size_t, off64_t) __attribute__((alias("pwrite")));
int ftruncate64(int, off64_t) noexcept __attribute__((alias("ftruncate")));
int fcntl64(int, int, ...) __attribute__((alias("fcntl")));
ssize_t sendfile64(int, int, off64_t*, size_t) noexcept __attribute__((alias("sendfile")));
}
