#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace varnlog::platform {

/// The addresses of a host. They are looked up in a thread of their own, so that whoever waits for them can
/// give up: a name server that does not answer would hold him up for half a minute. The thread ends by itself
/// then.
class HostLookUp {
 public:
  /// Begins.
  explicit HostLookUp(std::string host);

  /// True when it is over, at the latest after that time.
  [[nodiscard]] bool Await(std::chrono::milliseconds most) const;
  /// As numbers, in the order in which they are to be tried; none when the host is not known. Only when it is
  /// over.
  [[nodiscard]] const std::vector<std::string>& Addresses() const;
  /// Why there are none, in the system's words.
  [[nodiscard]] const std::string& Error() const;

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace varnlog::platform
