#include "platform/Sockets.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>

namespace varnlog::platform {

bool WaitForSocket(int socket, bool writing, std::chrono::milliseconds most) {
  const auto end = std::chrono::steady_clock::now() + most;
  pollfd wanted{socket, static_cast<short>(writing ? POLLOUT : POLLIN), 0};
  for (;;) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    const int ready = poll(&wanted, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
    if (ready >= 0 || errno != EINTR) return ready != 0;
  }
}

}  // namespace varnlog::platform
