#include "bench/BareScan.h"

#include <stdexcept>

#include <sqlite3.h>

namespace varnlog::bench {

void ScanBare(benchmark::State& state, const std::filesystem::path& log, const char* select) {
  sqlite3* bare = nullptr;
  if (sqlite3_open_v2(log.c_str(), &bare, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
    throw std::runtime_error("cannot open");
  }
  for (auto _ : state) {
    sqlite3_stmt* scan = nullptr;
    sqlite3_prepare_v2(bare, select, -1, &scan, nullptr);
    const int columns = sqlite3_column_count(scan);
    std::size_t bytes = 0;
    while (sqlite3_step(scan) == SQLITE_ROW) {
      for (int i = 0; i < columns; ++i) {
        benchmark::DoNotOptimize(sqlite3_column_text(scan, i));
        bytes += static_cast<std::size_t>(sqlite3_column_bytes(scan, i));
      }
    }
    sqlite3_finalize(scan);
    benchmark::DoNotOptimize(bytes);
  }
  sqlite3_close(bare);
}

}  // namespace varnlog::bench
