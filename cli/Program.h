#pragma once

#include <span>

#include "cli/Command.h"

namespace varnlog::cli {

/// The whole of a program that does one of `commands`: reads the command line, answers --help and --version,
/// and gives the exit status: 0 done, 1 failed, 2 wrong usage. A command without `run` is handed over to the
/// program of documents, which is called with the same arguments and ends in place of this one. Both programs
/// speak as varnlogctl, the one that users call.
[[nodiscard]] int RunProgram(int argc, char** argv, std::span<const Command> commands);

}  // namespace varnlog::cli
