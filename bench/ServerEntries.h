#pragma once

#include <string>

namespace varnlog::bench {

inline constexpr const char* kEnterOption = "--enter";
/// What processes of their own are started for: counts up comments of the log behind the link, as a program
/// in which somebody enters values, for that many seconds. Writes how many changes were kept; the exit
/// status.
[[nodiscard]] int EnterValues(const std::string& link, int seconds);

}  // namespace varnlog::bench
