#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "seals/SealTables.h"

namespace varnlog::seals {

/// Names a state of a log, kept outside of it: the number of its newest seal and the beginning of that seal's
/// digest.
struct Anchor {
  std::int64_t seal = 0;
  std::string digits;  // hexadecimal: 64, or 25 of an anchor that was printed

  /// Whether this is the seal that the anchor names.
  [[nodiscard]] bool Names(std::string_view digest) const { return digest.starts_with(digits); }
};

/// "NUMBER-DIGEST" with the whole digest, or the printed form; letter case, blanks and hyphens are ignored in
/// that. Nothing for another text or a check digit that does not fit.
[[nodiscard]] std::optional<Anchor> ReadAnchor(std::string_view text);

/// The form that a person can type: the number, 100 bits of the digest in four groups, a check digit:
/// "1523-7KQ4M-0XW2P-9A3BD-EF5GH-T".
[[nodiscard]] std::string PrintedAnchor(const Head& head);

}  // namespace varnlog::seals
