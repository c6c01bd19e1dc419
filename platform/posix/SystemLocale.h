#pragma once

#include <string>

namespace varnlog::platform {

/// Language and country ("de_DE") of the user's locale for one category, looked up as the system's own
/// library does: LC_ALL, then `category` ("LC_TIME"), then LANG. "" where none is set, and for "C", "POSIX"
/// and names that are no locale.
[[nodiscard]] std::string SystemLocale(const char* category);

}  // namespace varnlog::platform
