#pragma once

#include <cstdint>
#include <filesystem>

namespace varnlog::bench {

/// The yardstick: reads the records of an exchange file with the program's own reader and inserts their rows
/// into the log's table without any index, in one transaction, through bare prepared statements. Returns the
/// rows.
std::int64_t RawInsert(const std::filesystem::path& exchangeFile, const std::filesystem::path& database);

}  // namespace varnlog::bench
