#pragma once

#include <cstdint>
#include <filesystem>

namespace varnlog::bench {

/// Made once and kept for the whole run: a sound Jet 4 log of exactly `rows` exposures. Its pages are those
/// of a small log again and again, every row under an id of its own.
[[nodiscard]] const std::filesystem::path& OldLogFile(std::int64_t rows);

}  // namespace varnlog::bench
