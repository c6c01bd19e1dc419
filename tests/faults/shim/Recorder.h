#pragma once

#include <cstddef>
#include <cstdint>

#include "tests/faults/shim/Orders.h"

namespace varnlog::faults {

/// A path below the watched folder, complete; empty when the file is none of ours.
struct WatchedPath {
  char text[1024] = "";
  [[nodiscard]] bool IsOurs() const { return text[0] != '\0'; }
};

/// The state of the preloaded library: which files are watched, what is to happen, where it is recorded. It
/// asks the system directly and never allocates.
class Recorder {
 public:
  /// The one of this process, ready from its first use on.
  static Recorder& Instance();

  [[nodiscard]] bool Watches(const char* path, WatchedPath& watched) const;
  [[nodiscard]] bool Watches(int descriptor) const;
  void Remember(int descriptor, const WatchedPath& path);
  void Forget(int descriptor);
  [[nodiscard]] const char* PathOf(int descriptor) const { return open_[descriptor].text; }

  Verdict Ask(Call call) { return orders_.At(call); }
  [[nodiscard]] bool FailsAllocation() { return counts_ && orders_.FailsAllocation(); }
  /// Allocations count from the program's first line on.
  void CountAllocations() { counts_ = true; }

  /// Writes down what was done. `data` may be null.
  void Record(StepHead step, const char* path, const char* newPath = "", const void* data = nullptr) const;

 private:
  Recorder();

  static constexpr int kMostOpen = 256;
  Orders orders_;
  char root_[1024] = "";
  WatchedPath open_[kMostOpen];
  int trace_ = -1;
  bool counts_ = false;
  friend void ReportAllocations();
};

/// The file's number in the file system, 0 when it cannot be asked.
[[nodiscard]] std::uint64_t FileNumber(int descriptor);

}  // namespace varnlog::faults
