#pragma once

#include <filesystem>

#include <benchmark/benchmark.h>

namespace varnlog::bench {

/// The yardstick for whatever reads columns of a whole log: the storage's own statement, every row stepped
/// and every column's text asked for. Runs as the body of a benchmark; throws when the log does not open.
void ScanBare(benchmark::State& state, const std::filesystem::path& log, const char* select);

}  // namespace varnlog::bench
