// Allocations that fail, and a clock that need not be waited for.
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
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

using MainFunction = int (*)(int, char**, char**);
MainFunction realMain = nullptr;
bool counts = false;

int Main(int argc, char** argv, char** environment) {
  Recorder::Instance().CountAllocations();
  counts = true;
  return realMain(argc, argv, environment);
}

bool Fails() {
  if (!counts || !Recorder::Instance().FailsAllocation()) return false;
  errno = ENOMEM;
  return true;
}

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
void* malloc(size_t size) noexcept {
  return Fails() ? nullptr : __libc_malloc(size);
}
void* calloc(size_t count, size_t size) noexcept {
  return Fails() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, size_t size) noexcept {
  return Fails() ? nullptr : __libc_realloc(block, size);
}
void* aligned_alloc(size_t alignment, size_t size) noexcept {
  return Fails() ? nullptr : __libc_memalign(alignment, size);
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
