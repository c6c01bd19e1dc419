#pragma once

#include <string>
#include <string_view>

#include "core/TextLookup.h"

namespace varnlog::core {

/// A whole number with the language's separator between its thousands; anything else is left as it is.
/// FilledText() does so with the values of placeholders whose names begin with "lng".
[[nodiscard]] std::string Grouped(const TextLookup& texts, std::string_view number);

}  // namespace varnlog::core
