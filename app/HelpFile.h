#pragma once

#include <string>
#include <string_view>

#include "core/Globals.h"

namespace varnlog::app {

/// The help file of the language, "help/varnlog-F.qch" as delivered; the German one where there is
/// none of that language, whether that exists or not.
[[nodiscard]] std::string HelpFile(const core::Globals& globals);

/// The help page about a dialog, by the dialog's object name: "patients" for "frmPatSearch". For a message or
/// a file dialog by the key of its text: "printing" for "DRS_SAVEPDF_TITLE". The page about messages for any
/// other.
[[nodiscard]] std::string_view HelpPageOf(std::string_view dialog, std::string_view textKey = {});

}  // namespace varnlog::app
