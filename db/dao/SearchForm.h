#pragma once

#include <string>
#include <string_view>

namespace varnlog::dao {

/// A text as it is compared in searching within texts, by the engine's one rule: letter case does not count,
/// ß is ss. Without accents é is e, ø is o and й is и.
[[nodiscard]] std::string SearchForm(std::string_view text, bool accentsMatter);

}  // namespace varnlog::dao
