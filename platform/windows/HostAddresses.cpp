#include "platform/HostAddresses.h"

#include <array>
#include <memory>
#include <winsock2.h>
#include <ws2tcpip.h>

namespace varnlog::platform {

HostAddresses AddressesOf(const std::string& host) {
  // For as long as the process lives: others use it, too.
  static const int kStarted = [] {
    WSADATA ignored{};
    return WSAStartup(MAKEWORD(2, 2), &ignored);
  }();
  addrinfo wanted{};
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* list = nullptr;
  HostAddresses found;
  const int error = kStarted != 0 ? kStarted : getaddrinfo(host.c_str(), nullptr, &wanted, &list);
  if (error != 0) {
    found.error = "error " + std::to_string(error);
    return found;
  }
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owned(list, freeaddrinfo);
  for (const addrinfo* each = list; each != nullptr; each = each->ai_next) {
    std::array<char, NI_MAXHOST> text{};
    const auto length = static_cast<socklen_t>(each->ai_addrlen);
    if (getnameinfo(each->ai_addr, length, text.data(), static_cast<DWORD>(text.size()), nullptr, 0,
                    NI_NUMERICHOST) == 0)
      found.addresses.emplace_back(text.data());
  }
  return found;
}

}  // namespace varnlog::platform
