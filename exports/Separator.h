#pragma once

#include <string>
#include <string_view>

#include "core/SettingsStore.h"

namespace varnlog::exports {

/// Where the user's choice of what divides the values of a CSV file is kept.
inline constexpr std::string_view kExportSection = "Export";
inline constexpr std::string_view kSeparatorKey = "ListSeparator";

/// What the settings name ("semicolon", "comma" or "tab"), else what this system uses.
[[nodiscard]] char ListSeparatorOf(const core::SettingsStore& settings, const std::string& iniFile);

}  // namespace varnlog::exports
