#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace varnlog::legacy {

using Bytes = std::span<const std::byte>;

/// Little-endian numbers out of a piece of the file, at absolute offsets within the piece. A number that does
/// not lie wholly in the piece reads as 0 and is remembered, so that a structure can be read field by field
/// and judged once.
class ByteReader {
 public:
  explicit ByteReader(Bytes bytes) : bytes_(bytes) {}

  [[nodiscard]] std::uint8_t U8(std::size_t offset) { return Number<std::uint8_t, 1>(offset); }
  [[nodiscard]] std::uint16_t U16(std::size_t offset) { return Number<std::uint16_t, 2>(offset); }
  [[nodiscard]] std::uint32_t U32(std::size_t offset) { return Number<std::uint32_t, 4>(offset); }
  [[nodiscard]] std::uint64_t U64(std::size_t offset) { return Number<std::uint64_t, 8>(offset); }
  [[nodiscard]] double F64(std::size_t offset) { return std::bit_cast<double>(U64(offset)); }
  [[nodiscard]] float F32(std::size_t offset) { return std::bit_cast<float>(U32(offset)); }

  /// The bytes from `offset` on, empty when they are not all there.
  [[nodiscard]] Bytes Slice(std::size_t offset, std::size_t length) {
    return Holds(offset, length) ? bytes_.subspan(offset, length) : Bytes{};
  }

  [[nodiscard]] std::size_t Size() const { return bytes_.size(); }
  /// Something was asked for that is not there.
  [[nodiscard]] bool Overran() const { return overran_; }

 private:
  [[nodiscard]] bool Holds(std::size_t offset, std::size_t length) {
    const bool holds = length <= bytes_.size() && offset <= bytes_.size() - length;
    overran_ = overran_ || !holds;
    return holds;
  }

  template <typename T, std::size_t Width>
  [[nodiscard]] T Number(std::size_t offset) {
    if (!Holds(offset, Width)) return 0;
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < Width; ++i) {
      value |= std::to_integer<std::uint64_t>(bytes_[offset + i]) << (8 * i);
    }
    return static_cast<T>(value);
  }

  Bytes bytes_;
  bool overran_ = false;
};

}  // namespace varnlog::legacy
