#include "platform/HostAddresses.h"

#include <array>
#include <memory>
#include <netdb.h>
#include <sys/socket.h>

namespace varnlog::platform {

HostAddresses AddressesOf(const std::string& host) {
  addrinfo wanted{};
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* list = nullptr;
  HostAddresses found;
  if (const int error = getaddrinfo(host.c_str(), nullptr, &wanted, &list); error != 0) {
    found.error = gai_strerror(error);
    return found;
  }
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owned(list, freeaddrinfo);
  for (const addrinfo* each = list; each != nullptr; each = each->ai_next) {
    std::array<char, NI_MAXHOST> text{};
    if (getnameinfo(each->ai_addr, each->ai_addrlen, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST) ==
        0)
      found.addresses.emplace_back(text.data());
  }
  return found;
}

}  // namespace varnlog::platform
