#pragma once

#include <optional>
#include <string_view>

namespace varnlog::logview {

/// A number that stands in a text field such as dose or voltage.
struct MeasuredValue {
  double value = 0;
  int decimals = 0;  // digits behind the decimal separator
};

/// Reads digits with at most one decimal separator, '.' or ','. Nothing for any other text: not for units,
/// signs or blanks, not for a leading zero that is no whole part, not for more digits than a number keeps,
/// and not for a comma before exactly three digits, which may as well divide thousands ("1,250").
[[nodiscard]] std::optional<MeasuredValue> ReadMeasured(std::string_view text);

}  // namespace varnlog::logview
