#pragma once

#include <string_view>

#include "db/dao/EngineError.h"

namespace varnlog::dao {

/// What a state of the server stands for, `state` being its five characters.
[[nodiscard]] ErrorNumber NumberOfState(std::string_view state);

/// Throws that error. `path` is what its text names, `detail` the server's own message.
[[noreturn]] void ThrowServerError(std::string_view state, std::string_view path, std::string_view detail);

}  // namespace varnlog::dao
