#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace varnlog::start {

/// The value of the first `key` in the first `section` that has it, without surrounding blanks and one pair
/// of quotes, cut at a zero character; nothing when there is none. `text` is a whole INI file in UTF-8. Names
/// are compared without regard to letter case, lines that begin with ';' are comments.
[[nodiscard]] std::optional<std::string> FindIniValue(std::string_view text, std::string_view section,
                                                      std::string_view key);

/// `text` with the value set; every other line is kept as it is. Nothing when one of the names or the value
/// cannot stand in an INI file (an empty name, a line break, a '=' in a key).
[[nodiscard]] std::optional<std::string> WithIniValue(std::string_view text, std::string_view section,
                                                      std::string_view key, std::string_view value);

}  // namespace varnlog::start
