#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/Files.h"

namespace varnlog::intake {

/// Looks at a file through a buffer of fixed size. Going forward is one pass over the file. Not a mapping: a
/// file that somebody cuts meanwhile gives nothing where a mapping would end the program.
class ByteWindow {
 public:
  static constexpr std::size_t kSize = std::size_t{1} << 20U;

  /// `length` bytes at `offset`, at most kSize of them, valid until the next call; nothing when the file ends
  /// before or cannot be read.
  [[nodiscard]] std::optional<std::string_view> At(const platform::File& file, std::uint64_t offset,
                                                   std::size_t length) {
    if (offset < start_ || offset + length > start_ + used_) {
      if (!Fill(file, offset, length)) return std::nullopt;
    }
    return std::string_view(buffer_.data() + (offset - start_), length);
  }

  /// Forgets what it holds, for the next file.
  void Reset();

 private:
  [[nodiscard]] bool Fill(const platform::File& file, std::uint64_t offset, std::size_t length);

  std::vector<char> buffer_;
  std::uint64_t start_ = 0;
  std::size_t used_ = 0;
};

}  // namespace varnlog::intake
