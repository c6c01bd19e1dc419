#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "intake/CToken.h"
#include "platform/CodePage.h"

namespace varnlog::intake {

/// One record of the exchange file:
///
///   | L: 2 bytes, signed, little-endian | kind: 1 | skipped: 1 | strings: L - 4, each ended by a zero |
///
/// L counts its own two bytes; a record without strings has four.
inline constexpr std::size_t kLengthBytes = 2;
inline constexpr std::size_t kShortestRecord = 4;

[[nodiscard]] inline std::int16_t RecordLength(std::string_view bytes) {
  const auto low = static_cast<unsigned char>(bytes[0]);
  const auto high = static_cast<unsigned char>(bytes[1]);
  return static_cast<std::int16_t>(low | (high << 8U));
}

/// True for "T" and "I"; other kinds are skipped whole.
[[nodiscard]] bool IsKnownKind(char kind);

/// True when the record has at least as many strings as its kind needs. Bytes behind them do not matter.
[[nodiscard]] bool HasItsStrings(std::string_view record);

/// How much of a record is wanted: the names and dates of an exposure stand before everything that a device
/// measured.
enum class Extent { kAll, kUpToTime };

/// Fills `token` from a record of a known kind, with kUpToTime its properties up to the time of the exposure.
/// False when it has too few strings.
[[nodiscard]] bool ParseRecord(std::string_view record, const platform::CodePage& oem, CToken& token,
                               Extent extent = Extent::kAll);

}  // namespace varnlog::intake
