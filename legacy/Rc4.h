#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "legacy/JetBytes.h"

namespace varnlog::legacy {

/// The stream cipher with which Jet hides its header and, in encoded files, every page. Both directions are
/// the same.
class Rc4 {
 public:
  /// The key is the four bytes of `key`, lowest first.
  explicit Rc4(std::uint32_t key);

  /// Applies the stream to `source`, as far as `target` reaches. They may be the same memory.
  void Apply(Bytes source, std::span<std::byte> target);

 private:
  std::array<std::uint8_t, 256> state_;
  std::uint8_t i_ = 0;
  std::uint8_t j_ = 0;
};

}  // namespace varnlog::legacy
