#include "logview/CRGBColorINI.h"

#include <optional>

#include "logview/LeadingNumber.h"

namespace varnlog::logview {

namespace {

/// The part behind `marker`; a marker with nothing readable behind it counts as 0, a missing one as nothing.
std::optional<Color> Part(std::string_view text, std::string_view marker) {
  const auto at = text.find(marker);
  if (at == std::string_view::npos) return std::nullopt;
  return static_cast<Color>(LeadingNumber(text.substr(at + marker.size()), 255).value_or(0));
}

}  // namespace

Color CRGBColorINI::RestoreColor(std::string_view key, Color fallback) const {
  const std::string text = settings_.ReadString(section_, key, iniFile_);
  const auto red = Part(text, "R=");
  const auto green = Part(text, "G=");
  const auto blue = Part(text, "B=");
  if (!red || !green || !blue) return fallback;
  return *red | *green << 8U | *blue << 16U;
}

GridColors LoadGridColors(const core::SettingsStore& settings, std::string_view iniFile) {
  constexpr Color kInactiveCaptionText = 0x80000013;
  CRGBColorINI colors(settings);
  colors.SetIniFile(iniFile);
  colors.SetSection("GridColors");
  return {.lockedBack = colors.RestoreColor("LockedBackColor", kInactiveCaptionText),
          .lockedFore = colors.RestoreColor("LockedForeColor", 0x000000),
          .editFore = colors.RestoreColor("EditForeColor", 0xFF0000),
          .editBack = colors.RestoreColor("EditBackColor", 0xFFFFFF),
          .noneEditBack = colors.RestoreColor("NoneEditBackColor", 0x00FFFF)};
}

}  // namespace varnlog::logview
