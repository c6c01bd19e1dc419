#pragma once

#include <string>

namespace varnlog::platform {

enum class Paper { kA4, kLetter };

/// What a locale such as "en_US" prints on; A4 for one that is not known.
[[nodiscard]] Paper PaperOf(const std::string& locale);

/// The user's (LC_ALL, LC_PAPER, LANG on POSIX); A4 where no locale is set.
[[nodiscard]] Paper SystemPaper();

}  // namespace varnlog::platform
