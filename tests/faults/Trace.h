#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tests/faults/shim/Calls.h"

namespace varnlog::faults {

/// One call of a recorded run that worked.
struct Step {
  std::uint64_t number = 0;
  Call call = Call::kLook;
  std::string path;
  std::string newPath;
  std::uint64_t file = 0;    // its number in the file system
  std::uint64_t offset = 0;  // of a write; the new length of a file that was cut
  std::string bytes;         // what was written
};

[[nodiscard]] std::vector<Step> ReadTrace(const std::filesystem::path& file);

/// The number of the first call of this kind on a file whose name, or new name, ends so; or of the `nth`.
/// Throws std::runtime_error when the run made none.
[[nodiscard]] std::uint64_t Find(const std::vector<Step>& run, Call call, std::string_view ending,
                                 int nth = 1);

/// Such as "rename varnlog.sdx" for the call of this number; empty when the run made none that worked.
[[nodiscard]] std::string Describe(const std::vector<Step>& run, std::uint64_t number);

}  // namespace varnlog::faults
