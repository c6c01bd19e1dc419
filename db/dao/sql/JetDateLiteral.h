#pragma once

#include <optional>
#include <string_view>

#include "platform/DateTime.h"

namespace varnlog::dao {

/// Reads what stands between the two # of a date literal: m/d/yyyy, optionally blanks and h:mm:ss, optionally
/// AM or PM. Nothing for any other form and for a day or time that does not exist.
[[nodiscard]] std::optional<platform::DateTime> ParseDateLiteral(std::string_view text);

}  // namespace varnlog::dao
