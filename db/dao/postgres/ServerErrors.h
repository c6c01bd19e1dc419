#pragma once

#include <string_view>

namespace varnlog::dao {

/// Throws the engine error that a state of the server stands for. `state` is its five characters, `path` what
/// the text names, `detail` the server's own message.
[[noreturn]] void ThrowServerError(std::string_view state, std::string_view path, std::string_view detail);

}  // namespace varnlog::dao
