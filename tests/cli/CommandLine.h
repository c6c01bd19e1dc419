#pragma once

#include <filesystem>
#include <string>

namespace varnlog::cli {

/// Runs a line as a shell does, with nothing to read; its output goes into files. Where there is no such
/// shell the line is one program with its arguments. The exit status, -1 when it did not end by itself.
[[nodiscard]] int Run(const std::string& line, const std::filesystem::path& out,
                      const std::filesystem::path& err);

}  // namespace varnlog::cli
