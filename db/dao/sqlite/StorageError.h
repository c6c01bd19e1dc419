#pragma once

#include <string_view>

#include "db/dao/EngineError.h"

namespace varnlog::dao {

/// Throws the engine error that a result code of the storage stands for. `file` is the path that the text
/// names, `detail` the storage's own message. Out of memory becomes std::bad_alloc.
[[noreturn]] void ThrowStorageError(int code, std::string_view file, std::string_view detail);

/// The text of an error about a file, the path in quotes: FileText("The file ", path, " is missing.").
[[nodiscard]] std::string FileText(std::string_view before, std::string_view file, std::string_view after);

}  // namespace varnlog::dao
