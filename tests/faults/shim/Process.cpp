// Allocations that fail, and a clock that need not be waited for.
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <link.h>
#include <pwd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "tests/faults/shim/Recorder.h"

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
}

namespace {

using varnlog::faults::Recorder;

/// Where the code of libraries lies that do not survive a failing allocation: those that find, read and paint
/// fonts. What they ask for they get; it is not counted.
class Frail {
 public:
  static void Find() { dl_iterate_phdr(Add, nullptr); }
  static bool Holds(const void* caller) {
    const auto place = reinterpret_cast<std::uintptr_t>(caller);
    for (std::size_t i = 0; i < count_; ++i) {
      if (place >= parts_[i].begin && place < parts_[i].end) return true;
    }
    return false;
  }

 private:
  struct Part {
    std::uintptr_t begin;
    std::uintptr_t end;
  };
  static int Add(dl_phdr_info* library, size_t /*size*/, void* /*data*/) {
    for (const char* const name : {"Qt6", "fontconfig", "freetype", "expat", "harfbuzz", "glib-2"}) {
      if (std::strstr(library->dlpi_name, name) == nullptr) continue;
      for (int i = 0; i < library->dlpi_phnum && count_ < kMost; ++i) {
        const auto begin = library->dlpi_addr + library->dlpi_phdr[i].p_vaddr;
        if ((library->dlpi_phdr[i].p_flags & PF_X) != 0)
          parts_[count_++] = {begin, begin + library->dlpi_phdr[i].p_memsz};
      }
    }
    return 0;
  }
  static constexpr std::size_t kMost = 16;
  static inline Part parts_[kMost];
  static inline std::size_t count_ = 0;
};

using MainFunction = int (*)(int, char**, char**);
MainFunction realMain = nullptr;
bool counts = false;

int Main(int argc, char** argv, char** environment) {
  Frail::Find();
  // The C library takes it for a mistake of its own when it has no memory while it reads where users are
  // listed. It reads that once.
  static_cast<void>(getpwuid(geteuid()));
  Recorder::Instance().CountAllocations();
  counts = true;
  return realMain(argc, argv, environment);
}

#ifndef VARNLOG_SANITIZED
bool Fails(const void* caller) {
  if (!counts || Frail::Holds(caller) || !Recorder::Instance().FailsAllocation()) return false;
  errno = ENOMEM;
  return true;
}
#endif

constexpr std::int64_t kSecond = 1'000'000'000;

/// Nanoseconds that the program has slept without any of them passing.
std::atomic<std::int64_t> slept = 0;

std::int64_t Ahead(clockid_t clock) {
  static const char* const later = std::getenv(varnlog::faults::env::kLater);
  return slept + (clock == CLOCK_REALTIME && later != nullptr ? std::atoll(later) * kSecond : 0);
}

}  // namespace

extern "C" {

int __libc_start_main(MainFunction main, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*loaderFini)(), void* stackEnd) {
  using Start = int (*)(MainFunction, int, char**, void (*)(), void (*)(), void (*)(), void*);
  realMain = main;
  return reinterpret_cast<Start>(dlsym(RTLD_NEXT, "__libc_start_main"))(Main, argc, argv, init, fini,
                                                                        loaderFini, stackEnd);
}

#ifndef VARNLOG_SANITIZED
// Asks for memory in the name of its caller.
char* strdup(const char* text) noexcept {
  const size_t size = std::strlen(text) + 1;
  void* const copy = Fails(__builtin_return_address(0)) ? nullptr : __libc_malloc(size);
  return copy == nullptr ? nullptr : static_cast<char*>(std::memcpy(copy, text, size));
}
void* malloc(size_t size) noexcept {
  return Fails(__builtin_return_address(0)) ? nullptr : __libc_malloc(size);
}
void* calloc(size_t count, size_t size) noexcept {
  return Fails(__builtin_return_address(0)) ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, size_t size) noexcept {
  return Fails(__builtin_return_address(0)) ? nullptr : __libc_realloc(block, size);
}
void* aligned_alloc(size_t alignment, size_t size) noexcept {
  return Fails(__builtin_return_address(0)) ? nullptr : __libc_memalign(alignment, size);
}
#endif

int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const int result = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  if (result != 0) return result;
  const std::int64_t now = time->tv_nsec + Ahead(clock);
  time->tv_sec += now / kSecond;
  time->tv_nsec = now % kSecond;
  return 0;
}
int nanosleep(const timespec* time, timespec*) {
  slept += time->tv_sec * kSecond + time->tv_nsec;
  return 0;
}
int clock_nanosleep(clockid_t, int, const timespec* time, timespec*) {
  return nanosleep(time, nullptr);
}
int usleep(useconds_t time) {
  constexpr std::int64_t kMicrosecond = 1000;
  slept += time * kMicrosecond;
  return 0;
}
}
