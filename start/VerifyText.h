#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/TextLookup.h"
#include "seals/Verifier.h"

namespace varnlog::start {

/// A finding in the current language: which exposure, entry or seal does not fit, and what that means.
[[nodiscard]] std::string Describe(const seals::Finding& finding, const core::TextLookup& texts);

/// What was found, a line each in the current language: findings, then what is no fault but worth knowing.
[[nodiscard]] std::vector<std::string> VerifyLines(const seals::Verification& result,
                                                   const core::TextLookup& texts);

/// The whole result for a window, the log's state in all its forms included; `anchor` is what was asked
/// about.
[[nodiscard]] std::string VerifyText(const seals::Verification& result,
                                     const std::optional<seals::Anchor>& anchor,
                                     const core::TextLookup& texts);

}  // namespace varnlog::start
