#pragma once

namespace varnlog::platform {

/// True when standard error is a terminal, so that a progress bar makes sense on it.
[[nodiscard]] bool StandardErrorIsTerminal();

/// Columns of that terminal; 80 when unknown.
[[nodiscard]] int TerminalWidth();

}  // namespace varnlog::platform
