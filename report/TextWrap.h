#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "report/ReportCanvas.h"

namespace varnlog::report {

/// The room that a text has.
struct TextRoom {
  double width = 0;  // points
  int font = 0;
  int lines = 1;  // most lines, at least 1
};

/// Whether the text stands on one line as it is: nothing in it breaks a line and it is no wider than the
/// room.
[[nodiscard]] bool FitsOneLine(std::string_view text, const TextRoom& room, const TextMetrics& metrics);

/// The lines of a text: it breaks where it says so itself (empty lines are left out), at blanks, after
/// hyphens and slashes, and inside a word that is wider than the room. Control characters are blanks. What is
/// left over after the last line that there is room for is cut, and an ellipsis says so. No line is wider
/// than the room unless a single character is. At least one line.
[[nodiscard]] std::vector<std::string> WrapText(std::string_view text, const TextRoom& room,
                                                const TextMetrics& metrics);

}  // namespace varnlog::report
