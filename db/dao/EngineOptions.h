#pragma once

#include <cstdint>

namespace varnlog::dao {

/// What the options of an engine come to.
struct EngineOptions {
  /// KiB of page cache for reading; 0 leaves the storage's own default.
  std::int32_t bufferSize = 0;
  /// A locked file is asked for this often, for longer than an update waits for the exchange file while it
  /// holds the lock ...
  std::int32_t lockRetry = 50;
  /// ... at intervals that come to this many milliseconds each.
  std::int32_t lockDelay = 100;
  /// Whether a commit waits for the disk: one asked for by the program, and one the engine makes for a single
  /// change.
  bool userCommitSync = true;
  bool implicitCommitSync = true;
};

}  // namespace varnlog::dao
