#pragma once

#include <memory>

#include "cli/Options.h"
#include "cli/Output.h"
#include "exports/RowWriter.h"

namespace varnlog::cli {

/// What `list` and `history` print in: CSV and JSON as scripts read them, or columns aligned for a terminal,
/// in whose harmless values control characters become blanks.
[[nodiscard]] std::unique_ptr<exports::RowWriter> MakeRowWriter(ListFormat format, exports::Values values,
                                                                Output& output);

}  // namespace varnlog::cli
