#pragma once

#include <chrono>

namespace varnlog::platform {

/// Waits until something can be read from a socket or, with `writing`, written to it, or it was closed. False
/// when that does not happen in time. `socket` is the system's number of it.
[[nodiscard]] bool WaitForSocket(int socket, bool writing, std::chrono::milliseconds most);

}  // namespace varnlog::platform
