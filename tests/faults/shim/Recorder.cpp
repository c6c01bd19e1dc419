#include "tests/faults/shim/Recorder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace varnlog::faults {
namespace {

int RawOpen(const char* path, int flags) {
  constexpr int kMode = 0666;
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags | O_CLOEXEC, kMode));
}

void RawClose(int descriptor) {
  syscall(SYS_close, descriptor);
}

/// The program may look at any descriptor that it opened; ours are out of its way.
int OpenOutOfTheWay(const char* path) {
  constexpr int kHigh = 700;
  const int low = RawOpen(path, O_WRONLY | O_CREAT | O_APPEND);
  if (low < 0) return low;
  const int high = static_cast<int>(syscall(SYS_fcntl, low, F_DUPFD_CLOEXEC, kHigh));
  RawClose(low);
  return high;
}

}  // namespace

std::uint64_t FileNumber(int descriptor) {
  struct stat info {};
  return syscall(SYS_newfstatat, descriptor, "", &info, AT_EMPTY_PATH) == 0 ? info.st_ino : 0;
}

Recorder& Recorder::Instance() {
  // Asked for by the first allocation of the process, long before constructors run.
  alignas(Recorder) static char place[sizeof(Recorder)];
  static Recorder* instance = nullptr;
  if (instance == nullptr) {
    instance = reinterpret_cast<Recorder*>(place);
    new (place) Recorder();
  }
  return *instance;
}

Recorder::Recorder() {
  const char* const root = std::getenv(env::kRoot);
  if (root == nullptr) return;
  std::strncpy(root_, root, sizeof(root_) - 1);
  orders_.Load(std::getenv(env::kPlan));
  if (const char* const trace = std::getenv(env::kTrace)) trace_ = OpenOutOfTheWay(trace);
}

bool Recorder::Watches(const char* path, WatchedPath& watched) const {
  if (root_[0] == '\0' || path == nullptr) return false;
  std::size_t length = 0;
  if (path[0] != '/') {
    const long folder = syscall(SYS_getcwd, watched.text, sizeof(watched.text));
    length = folder > 0 ? static_cast<std::size_t>(folder) - 1 : 0;
    watched.text[length++] = '/';
  }
  std::strncpy(watched.text + length, path, sizeof(watched.text) - length - 1);
  const std::size_t root = std::strlen(root_);
  const bool ours = std::strncmp(watched.text, root_, root) == 0 &&
                    (watched.text[root] == '/' || watched.text[root] == '\0');
  if (!ours) watched.text[0] = '\0';
  return ours;
}

bool Recorder::Watches(int descriptor) const {
  return descriptor >= 0 && descriptor < kMostOpen && open_[descriptor].IsOurs();
}

void Recorder::Remember(int descriptor, const WatchedPath& path) {
  if (descriptor >= 0 && descriptor < kMostOpen) open_[descriptor] = path;
}

void Recorder::Forget(int descriptor) {
  if (descriptor >= 0 && descriptor < kMostOpen) open_[descriptor].text[0] = '\0';
}

void Recorder::Record(StepHead step, const char* path, const char* newPath, const void* data) const {
  if (trace_ < 0) return;
  step.path = static_cast<std::uint16_t>(std::strlen(path));
  step.newPath = static_cast<std::uint16_t>(std::strlen(newPath));
  if (data == nullptr) step.bytes = 0;
  const iovec parts[] = {{&step, sizeof(step)},
                         {const_cast<char*>(path), step.path},
                         {const_cast<char*>(newPath), step.newPath},
                         {const_cast<void*>(data), step.bytes}};
  syscall(SYS_writev, trace_, parts, std::size(parts));
}

void LetExposuresArrive(std::uint64_t number) {
  const char* const from = std::getenv(env::kArrival);
  const char* const exchange = std::getenv(env::kExchange);
  if (from == nullptr || exchange == nullptr) return;
  const int source = RawOpen(from, O_RDONLY);
  const int target = RawOpen(exchange, O_WRONLY | O_CREAT | O_APPEND);
  static char bytes[1U << 16U];
  const long got = syscall(SYS_read, source, bytes, sizeof(bytes));
  if (got > 0 && syscall(SYS_write, target, bytes, got) == got) {
    const StepHead step{.number = number,
                        .file = FileNumber(target),
                        .bytes = static_cast<std::uint32_t>(got),
                        .call = Call::kArrive};
    Recorder::Instance().Record(step, exchange, "", bytes);
  }
  RawClose(source);
  RawClose(target);
}

/// When the program ends by itself: how many allocations it made, for the sweep to try each.
__attribute__((destructor)) void ReportAllocations() {
  const char* const path = std::getenv(env::kCount);
  if (path == nullptr) return;
  const int file = RawOpen(path, O_WRONLY | O_CREAT | O_TRUNC);
  char text[32];
  const int length =
      std::snprintf(text, sizeof(text), "%llu",
                    static_cast<unsigned long long>(Recorder::Instance().orders_.Allocations()));
  syscall(SYS_write, file, text, length);
  RawClose(file);
}

}  // namespace varnlog::faults
