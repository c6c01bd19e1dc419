#pragma once

#include <chrono>
#include <cstdint>

#include "db/dao/rows/RowStore.h"
#include "db/dao/sqlite/Statement.h"

namespace varnlog::dao {

class Connection;

/// Tells whether a file has changed since something was read from it, by whomever.
class ChangeWatch {
 public:
  explicit ChangeWatch(Connection& file) : file_(file) {}

  /// Costs one small read of the file and takes no lock.
  [[nodiscard]] RowStamp Current();
  /// The same for one of many rows that are shown together: others' changes are looked for only if that was
  /// not done within the last few microseconds, less than a change takes.
  [[nodiscard]] RowStamp Recent();
  /// Another one after every transaction of the program.
  [[nodiscard]] std::int64_t Epoch() const { return epoch_; }
  /// Rows changed through this connection, held back or written, rolled back or not.
  [[nodiscard]] std::int64_t OwnChanges() const;
  /// Changes exactly when another connection has changed the file.
  [[nodiscard]] std::int64_t OthersVersion();
  /// Makes every stamp from now on differ from the earlier ones.
  void Forget() { ++epoch_; }

 private:
  Connection& file_;
  std::int64_t epoch_ = 0;
  std::uint32_t fileChanges_ = 0;
  std::chrono::steady_clock::time_point fileChangesRead_;
  Statement othersVersion_;
};

}  // namespace varnlog::dao
