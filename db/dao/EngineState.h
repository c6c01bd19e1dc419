#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "db/dao/ForeignFormat.h"

namespace varnlog::dao {

class Storage;

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

/// Shared by an engine, its workspaces and their open databases.
struct EngineState {
  EngineOptions options;
  ForeignFormat foreign;
  /// Asked now and then while a server is being reached; false gives up.
  std::function<bool()> waiting;
  std::vector<std::weak_ptr<Storage>> storages;
  /// Cache hits of databases that are closed by now.
  std::int64_t closedCacheReads = 0;
  /// Counts at the last reset, subtracted from what is reported; indexed by EngineStatistic.
  std::array<std::int64_t, 6> statisticsAtReset{};
};

}  // namespace varnlog::dao
