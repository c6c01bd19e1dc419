#pragma once

#include <string>
#include <string_view>

namespace varnlog::app {

/// The help file of the language, "help/varnlog-F.qch" in the program folder; the German one where there is
/// none of that language, whether that exists or not.
[[nodiscard]] std::string HelpFile(std::string_view programFolder, std::string_view language);

/// The help page about a dialog, by the dialog's object name: "patients" for "frmPatSearch". The page about
/// messages for any other.
[[nodiscard]] std::string_view HelpPageOf(std::string_view dialog);

}  // namespace varnlog::app
