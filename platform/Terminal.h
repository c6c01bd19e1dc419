#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace varnlog::platform {

/// True when standard error is a terminal, so that a progress bar makes sense on it.
[[nodiscard]] bool StandardErrorIsTerminal();

/// Columns of that terminal; 80 when unknown.
[[nodiscard]] int TerminalWidth();

/// The columns that a UTF-8 text takes on a terminal: 2 for wide characters, 0 for combining ones. Control
/// characters count 1; a caller replaces them first.
[[nodiscard]] std::size_t DisplayWidth(std::string_view text);

/// The text as a terminal may be given it: what would control it (escape sequences, line breaks, the
/// eight-bit control characters, marks that turn the direction of writing) and what is no UTF-8 becomes a
/// blank; the characters in `kept` stay.
[[nodiscard]] std::string PrintableText(std::string_view text, std::string_view kept = {});

/// What is written to the standard streams from now on arrives byte for byte, and a console shows it as
/// UTF-8. Writing to a pipe whose reader is gone fails like any other write, instead of ending the program.
void PrepareStandardStreams();

}  // namespace varnlog::platform
