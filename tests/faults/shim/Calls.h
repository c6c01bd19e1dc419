#pragma once

#include <array>
#include <cerrno>
#include <cstdint>
#include <string_view>

namespace varnlog::faults {

/// What a program asks of the file system, as far as it can fail.
enum class Call : std::uint8_t {
  kOpen,
  kCreate,  // opens and makes the file
  kEmpty,   // opens and cuts it to nothing
  kRead,
  kWrite,
  kTruncate,
  kSync,
  kClose,
  kRename,
  kLink,
  kRemove,
  kMakeFolder,
  kLook,  // is it there, how long is it, whose is it?
  kList,
  kMode,    // owner and mode
  kLock,    // byte locks and leases
  kArrive,  // the imaging suite appends, not the program
};

[[nodiscard]] constexpr bool Changes(Call call) {
  constexpr std::array kChanging = {Call::kCreate, Call::kEmpty, Call::kWrite,  Call::kTruncate,  Call::kSync,
                                    Call::kRename, Call::kLink,  Call::kRemove, Call::kMakeFolder};
  for (const Call changing : kChanging) {
    if (call == changing) return true;
  }
  return false;
}

/// Stands for a write that puts only half of the bytes; no system has an error of this number.
constexpr int kHalf = 1000;

/// Whether a system can answer the call in this way.
[[nodiscard]] constexpr bool CanAnswer(Call call, int error) {
  switch (error) {
    case EIO:
      return call != Call::kLock && call != Call::kArrive;
    case ENOSPC:
    case EDQUOT:
      return call == Call::kCreate || call == Call::kWrite || call == Call::kRename || call == Call::kLink ||
             call == Call::kMakeFolder;
    case EACCES:
      return call == Call::kOpen || call == Call::kCreate || call == Call::kEmpty || call == Call::kRename ||
             call == Call::kLink || call == Call::kRemove || call == Call::kLook || call == Call::kList ||
             call == Call::kMode || call == Call::kLock;
    case EINTR:
      return call == Call::kOpen || call == Call::kRead || call == Call::kWrite || call == Call::kTruncate ||
             call == Call::kSync || call == Call::kClose;
    case kHalf:
      return call == Call::kWrite;
    default:
      return false;
  }
}

/// One call of a recorded run. In the record two paths and the bytes written follow it.
struct StepHead {
  std::uint64_t number = 0;  // counted from 1 in each run
  std::uint64_t file = 0;    // the file's number in the file system
  std::uint64_t offset = 0;  // the new length of a file that was cut
  std::uint32_t bytes = 0;
  std::uint16_t path = 0;
  std::uint16_t newPath = 0;
  Call call = Call::kLook;
  std::array<char, 7> unused{};
};

/// The preloaded library's orders and reports are environment variables.
namespace env {
constexpr const char* kRoot = "VARNLOG_FAULTS_ROOT";          // only files below this folder count
constexpr const char* kPlan = "VARNLOG_FAULTS_PLAN";          // FaultPlan::Text()
constexpr const char* kTrace = "VARNLOG_FAULTS_TRACE";        // where to record the run
constexpr const char* kLater = "VARNLOG_FAULTS_LATER";        // seconds that the clock is ahead
constexpr const char* kCount = "VARNLOG_FAULTS_COUNT";        // where to write the number of allocations
constexpr const char* kArrival = "VARNLOG_FAULTS_ARRIVAL";    // what arrives ...
constexpr const char* kExchange = "VARNLOG_FAULTS_EXCHANGE";  // ... at the end of this file
}  // namespace env

}  // namespace varnlog::faults
