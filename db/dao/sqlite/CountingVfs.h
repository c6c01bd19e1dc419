#pragma once

#include <cstdint>

namespace varnlog::dao {

/// What all connections of the process did to files since it started.
struct FileCounters {
  std::int64_t reads = 0;
  std::int64_t writes = 0;
  std::int64_t locksPlaced = 0;
  std::int64_t locksReleased = 0;
};

[[nodiscard]] const FileCounters& CountedFileUse();

/// The name of the storage's file layer that counts and otherwise does what the system's own does; made
/// known on first use. nullptr when the storage has no file layer at all.
[[nodiscard]] const char* CountingVfsName();

}  // namespace varnlog::dao
