#pragma once

#include <string>

#include "db/dao/EngineError.h"

namespace varnlog::core {

/// What the user is told about an engine error: its number and the engine's words.
[[nodiscard]] std::string EngineErrorText(const dao::EngineError& error);

}  // namespace varnlog::core
