#pragma once

#include <optional>
#include <string_view>

#include "core/TextLookup.h"
#include "platform/DateTime.h"
#include "platform/ShortDate.h"

namespace varnlog::dialogs {

/// Reads a day as people type it: as a date in full, without its year ("1.11.", this year's), as digits alone
/// ("01112026", "011126", in the order of the short form), or as the language's word for today or yesterday.
/// Nothing for any other text.
[[nodiscard]] std::optional<platform::DateTime> ReadDateEntry(std::string_view text,
                                                              const platform::ShortDate& shortDate,
                                                              platform::DateTime today,
                                                              const core::TextLookup& texts);

}  // namespace varnlog::dialogs
