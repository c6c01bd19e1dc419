#pragma once

#include <tuple>
#include <vector>

namespace varnlog {

/// Rows of values for a test to go through: `for (const auto& [text, expected] : Table<...>{...})`.
template <typename... Values>
using Table = std::vector<std::tuple<Values...>>;

}  // namespace varnlog
