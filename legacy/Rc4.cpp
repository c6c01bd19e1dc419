#include "legacy/Rc4.h"

#include <algorithm>
#include <utility>

namespace varnlog::legacy {

Rc4::Rc4(std::uint32_t key) : state_{} {
  for (std::size_t i = 0; i < state_.size(); ++i) state_[i] = static_cast<std::uint8_t>(i);
  std::uint8_t j = 0;
  for (std::size_t i = 0; i < state_.size(); ++i) {
    const auto keyByte = static_cast<std::uint8_t>(key >> (8 * (i % 4)));
    j = static_cast<std::uint8_t>(j + state_[i] + keyByte);
    std::swap(state_[i], state_[j]);
  }
}

void Rc4::Apply(Bytes source, std::span<std::byte> target) {
  const std::size_t length = std::min(source.size(), target.size());
  for (std::size_t n = 0; n < length; ++n) {
    ++i_;
    j_ = static_cast<std::uint8_t>(j_ + state_[i_]);
    std::swap(state_[i_], state_[j_]);
    const auto stream = state_[static_cast<std::uint8_t>(state_[i_] + state_[j_])];
    target[n] = source[n] ^ std::byte{stream};
  }
}

}  // namespace varnlog::legacy
