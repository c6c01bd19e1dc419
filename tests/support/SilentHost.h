#pragma once

#include <arpa/inet.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace varnlog::test {

/// A port of this machine where somebody listens who never says a word.
class SilentHost {
 public:
  SilentHost() : listener_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (bind(listener_, reinterpret_cast<const sockaddr*>(&address), length) != 0 ||
        listen(listener_, 8) != 0 ||
        getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) != 0)
      throw std::runtime_error("no socket");
    port_ = std::to_string(ntohs(address.sin_port));
  }
  ~SilentHost() { close(listener_); }
  SilentHost(const SilentHost&) = delete;
  SilentHost& operator=(const SilentHost&) = delete;
  [[nodiscard]] const std::string& Port() const { return port_; }

 private:
  int listener_;
  std::string port_;
};

}  // namespace varnlog::test
