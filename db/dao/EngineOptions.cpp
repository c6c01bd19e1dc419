#include <algorithm>

#include "db/dao/DBEngine.h"
#include "db/dao/sqlite/CountingVfs.h"
#include "db/dao/storage/EngineState.h"
#include "db/dao/storage/Storage.h"

namespace varnlog::dao {

namespace {

using OptionValue = std::variant<std::int32_t, std::string>;

std::int32_t NumberOf(const OptionValue& value) {
  const auto* const number = std::get_if<std::int32_t>(&value);
  if (number == nullptr) throw EngineError(ErrorNumber::kNotSupported, "The option takes a number.");
  return std::max(0, *number);
}

bool YesOrNo(const OptionValue& value) {
  const auto* const text = std::get_if<std::string>(&value);
  if (text != nullptr && SameName(*text, "Yes")) return true;
  if (text != nullptr && SameName(*text, "No")) return false;
  throw EngineError(ErrorNumber::kNotSupported, "The option takes \"Yes\" or \"No\".");
}

// What each option comes to with this storage.
void SetOne(EngineOptions& options, EngineOption option, const OptionValue& value) {
  switch (option) {
    case EngineOption::kMaxBufferSize:  // pages kept in memory; more while a transaction is open
      options.bufferSize = NumberOf(value);
      return;
    case EngineOption::kLockRetry:  // how often a locked file is asked for before kFileInUse ...
      options.lockRetry = NumberOf(value);
      return;
    case EngineOption::kLockDelay:  // ... and the milliseconds each of these comes to
      options.lockDelay = NumberOf(value);
      return;
    case EngineOption::kUserCommitSync:  // CommitTrans waits for the disk
      options.userCommitSync = YesOrNo(value);
      return;
    case EngineOption::kImplicitCommitSync:  // Update outside a transaction waits for the disk
      options.implicitCommitSync = YesOrNo(value);
      return;
    case EngineOption::kPageTimeout:              // rows are looked at afresh on every visit
    case EngineOption::kExclusiveAsyncDelay:      // nothing is ever written later than it is committed
    case EngineOption::kSharedAsyncDelay:         // likewise
    case EngineOption::kFlushTransactionTimeout:  // likewise
    case EngineOption::kMaxLocksPerFile:          // the file has one lock, whatever is changed in it
    case EngineOption::kRecycleLVs:               // freed pages are always used again
      static_cast<void>(NumberOf(value));
      return;
  }
  throw EngineError(ErrorNumber::kNotSupported, "There is no such option.");
}

std::int64_t CacheReads(const EngineState& state) {
  std::int64_t reads = state.closedCacheReads;
  for (const auto& each : state.storages)
    if (const auto storage = each.lock()) reads += storage->CacheReads();
  return reads;
}

// The storage reads no page before it is asked for, so nothing is ever found read ahead.
std::int64_t Counted(const EngineState& state, EngineStatistic statistic) {
  const FileCounters& files = CountedFileUse();
  switch (statistic) {
    case EngineStatistic::kDiskReads:
      return files.reads;
    case EngineStatistic::kDiskWrites:
      return files.writes;
    case EngineStatistic::kCacheReads:
      return CacheReads(state);
    case EngineStatistic::kReadAheadCacheReads:
      return 0;
    case EngineStatistic::kLocksPlaced:
      return files.locksPlaced;
    case EngineStatistic::kLocksReleased:
      return files.locksReleased;
  }
  throw EngineError(ErrorNumber::kNotSupported, "There is no such statistic.");
}

}  // namespace

void DBEngine::SetOption(EngineOption option, const OptionValue& value) {
  SetOne(state_->options, option, value);
  for (const auto& each : state_->storages)
    if (const auto storage = each.lock(); storage != nullptr && storage->IsOpen()) storage->ApplyOptions();
}

std::int64_t DBEngine::ISAMStats(EngineStatistic statistic, bool reset) {
  const std::int64_t counted = Counted(*state_, statistic);
  std::int64_t& base = state_->statisticsAtReset[static_cast<std::size_t>(statistic)];
  const std::int64_t result = counted - base;
  if (reset) base = counted;
  return result;
}

void DBEngine::Idle(bool refreshCache) {
  if (!refreshCache) return;
  for (const auto& each : state_->storages)
    if (const auto storage = each.lock(); storage != nullptr && storage->IsOpen()) storage->Refresh();
}

}  // namespace varnlog::dao
