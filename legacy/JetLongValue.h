#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "legacy/JetBytes.h"
#include "legacy/JetPages.h"

namespace varnlog::legacy {

/// What a reading may still cost. A sound file names each of its bytes once, so that no walk through it can
/// take up more bytes than it has; a hostile one names the same bytes again and again.
class Budget {
 public:
  explicit Budget(std::uint64_t bytes) : left_(bytes) {}
  [[nodiscard]] bool Spend(std::uint64_t bytes) {
    if (bytes > left_) return false;
    left_ -= bytes;
    return true;
  }

 private:
  std::uint64_t left_;
};

/// The longest value that is read; a longer one counts as damaged, for no log ever held one.
inline constexpr std::size_t kLongestValue = 4U << 20U;

/// The bytes of a memo or binary column, of which the row holds only a head of twelve bytes:
///
///   0  length in 30 bits; bit 31: the value follows the head; bit 30: it lies in one piece elsewhere
///   4  the place of the first piece: row, then page in three bytes
///   8  not used
///
/// With neither bit set the value is a chain: every piece begins with the place of the next, 0 at the end.
/// `buffer` holds a piece's page, `joined` a value of several pieces. Nothing when the pieces do not make up
/// exactly the given length.
[[nodiscard]] std::optional<Bytes> LongValue(const JetPages& pages, Bytes head, Budget& budget,
                                             PageBuffer& buffer, std::vector<std::byte>& joined);

}  // namespace varnlog::legacy
