#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/SettingsStore.h"

namespace varnlog::logview {

/// A colour as 0x00BBGGRR, or 0x80000000 plus the number of one of the system's colours.
using Color = std::uint32_t;

/// Reads colours such as "R=255;G=255;B=0" from one section of an INI file.
class CRGBColorINI {
 public:
  explicit CRGBColorINI(const core::SettingsStore& settings) : settings_(settings) {}

  void SetIniFile(std::string_view file) { iniFile_ = file; }
  void SetSection(std::string_view section) { section_ = section; }

  /// `fallback` unless all three parts are there. Parts above 255 count as 255.
  [[nodiscard]] Color RestoreColor(std::string_view key, Color fallback) const;

 private:
  const core::SettingsStore& settings_;
  std::string iniFile_;
  std::string section_;
};

/// The log view's colours.
struct GridColors {
  Color lockedBack = 0;
  Color lockedFore = 0;
  Color editFore = 0;
  Color editBack = 0;
  Color noneEditBack = 0;
};

/// Section "GridColors".
[[nodiscard]] GridColors LoadGridColors(const core::SettingsStore& settings, std::string_view iniFile);

}  // namespace varnlog::logview
