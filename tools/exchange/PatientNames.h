#pragma once

#include <span>
#include <string_view>

namespace varnlog::tools {

/// Names of a made-up practice's patients and staff.
struct NameLists {
  std::span<const std::string_view> surnames;
  std::span<const std::string_view> women;
  std::span<const std::string_view> men;
  std::span<const std::string_view> staff;  // at most twelve characters
};

/// Cyrillic names for "CYR", else names of the countries around.
[[nodiscard]] NameLists NamesFor(std::string_view language);

}  // namespace varnlog::tools
