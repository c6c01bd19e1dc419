#include "platform/Sockets.h"

#include <algorithm>
#include <winsock2.h>

namespace varnlog::platform {

// Not WSAPoll(): older systems do not let it see that a connection was refused.
bool WaitForSocket(int socket, bool writing, std::chrono::milliseconds most) {
  const auto handle = static_cast<SOCKET>(socket);
  fd_set wanted{};
  fd_set failed{};
  wanted.fd_count = failed.fd_count = 1;
  wanted.fd_array[0] = failed.fd_array[0] = handle;
  const auto microseconds =
      std::chrono::duration_cast<std::chrono::microseconds>(std::max(most, std::chrono::milliseconds(0)));
  constexpr std::int64_t kSecond = 1'000'000;
  timeval patience{static_cast<long>(microseconds.count() / kSecond),
                   static_cast<long>(microseconds.count() % kSecond)};
  return select(0, writing ? nullptr : &wanted, writing ? &wanted : nullptr, &failed, &patience) != 0;
}

}  // namespace varnlog::platform
