#pragma once

namespace varnlog::platform {

/// What divides the values of a list on this system, as spreadsheets expect it of a CSV file: a semicolon
/// where the decimal separator is a comma, and where no locale is set, else a comma.
[[nodiscard]] char ListSeparator();

}  // namespace varnlog::platform
