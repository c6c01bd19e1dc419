#pragma once

#include <string>
#include <string_view>

#include "core/TextLookup.h"

namespace varnlog::intake {

/// Whether teeth are shown in the US (universal) numbering. Asked on every conversion, because the imaging
/// suite's setting may change while the program runs.
class ToothScheme {
 public:
  virtual ~ToothScheme() = default;
  [[nodiscard]] virtual bool SchemeUS() const = 0;
};

/// "J", "N", "-" as shown; "" for any other code.
[[nodiscard]] std::string PregnancyCodeToText(std::string_view code, const core::TextLookup& texts);
/// The code of a text as shown; "" for any other text.
[[nodiscard]] std::string PregnancyTextToCode(std::string_view text, const core::TextLookup& texts);
/// The stored codes of an exposure that is a repeat, or of no diagnostic use.
inline constexpr std::string_view kRepeatCode = "Wdh.";
inline constexpr std::string_view kNotDiagnosticCode = "N.d.";

/// They as shown; "" for any other code.
[[nodiscard]] std::string RepeatCodeToText(std::string_view code, const core::TextLookup& texts);
[[nodiscard]] std::string RepeatTextToCode(std::string_view text, const core::TextLookup& texts);

/// The stored (FDI) tooth in the configured numbering when `exposureType` is XI or XS and the whole value is
/// one tooth; any other value unchanged.
[[nodiscard]] std::string ToothToDisplay(std::string_view region, std::string_view exposureType,
                                         const ToothScheme& scheme);
[[nodiscard]] std::string ToothFromDisplay(std::string_view shown, std::string_view exposureType,
                                           const ToothScheme& scheme);

}  // namespace varnlog::intake
