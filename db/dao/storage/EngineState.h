#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "db/dao/EngineOptions.h"
#include "db/dao/ForeignFormat.h"

namespace varnlog::dao {

class Storage;

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
