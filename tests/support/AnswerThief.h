#pragma once

#include <array>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

#include "tests/support/TestFolder.h"

namespace varnlog::test {

/// Stands between programs and a server, in a folder of its own, and passes on what both say; once, on
/// demand, it ends a connection when the server has answered, and keeps the answer for itself. One connection
/// at a time.
class AnswerThief {
 public:
  explicit AnswerThief(const std::string& serverFolder)
      : server_(serverFolder), listener_(socket(AF_UNIX, SOCK_STREAM, 0)) {
    std::string pattern = "/tmp/varnlog-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no folder");
    folder_ = pattern;
    const sockaddr_un here = Address(folder_);
    if (bind(listener_, reinterpret_cast<const sockaddr*>(&here), sizeof here) != 0 ||
        listen(listener_, 4) != 0)
      throw std::runtime_error("no socket in " + folder_);
    thread_ = std::jthread([this](const std::stop_token& stop) {
      while (!stop.stop_requested())
        if (IsReadable(listener_)) Serve(stop, accept(listener_, nullptr, nullptr));
    });
  }
  ~AnswerThief() {
    thread_ = {};
    close(listener_);
    std::filesystem::remove_all(folder_);
  }
  AnswerThief(const AnswerThief&) = delete;
  AnswerThief& operator=(const AnswerThief&) = delete;

  [[nodiscard]] const std::string& Folder() const { return folder_; }
  /// The answer to the next message that holds this text.
  void StealsAnswerTo(std::string text) {
    wanted_ = std::move(text);
    isArmed_ = true;
  }
  [[nodiscard]] bool HasStolen() const { return !isArmed_; }

 private:
  static sockaddr_un Address(const std::string& folder) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, (folder + "/.s.PGSQL.5432").c_str(), sizeof address.sun_path - 1);
    return address;
  }
  static bool IsReadable(int socket) {
    pollfd wait{.fd = socket, .events = POLLIN, .revents = 0};
    return poll(&wait, 1, 20) > 0;
  }

  void Serve(const std::stop_token& stop, int program) {
    const int server = socket(AF_UNIX, SOCK_STREAM, 0);
    const sockaddr_un there = Address(server_);
    bool isThere = connect(server, reinterpret_cast<const sockaddr*>(&there), sizeof there) == 0;
    bool steals = false;
    std::array<pollfd, 2> ends{{{program, POLLIN, 0}, {server, POLLIN, 0}}};
    std::array<char, 65536> bytes{};
    while (isThere && !stop.stop_requested()) {
      // Somebody new makes this one's connection an old one.
      if (poll(ends.data(), 2, 20) == 0 && IsReadable(listener_)) break;
      for (std::size_t from = 0; from < 2 && isThere; ++from) {
        if (ends[from].revents == 0) continue;
        const ssize_t size = read(ends[from].fd, bytes.data(), bytes.size());
        isThere = size > 0 && !(from == 1 && steals);
        if (from == 0 && isArmed_ &&
            std::string(bytes.data(), size > 0 ? size : 0).find(wanted_) != std::string::npos)
          steals = true;
        if (isThere) isThere = write(ends[1 - from].fd, bytes.data(), static_cast<std::size_t>(size)) == size;
      }
    }
    if (steals) isArmed_ = false;
    close(server);
    close(program);
  }

  std::string server_;
  std::string folder_;
  std::string wanted_;
  std::atomic<bool> isArmed_ = false;
  int listener_;
  std::jthread thread_;
};

}  // namespace varnlog::test
