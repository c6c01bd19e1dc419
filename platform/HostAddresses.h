#pragma once

#include <string>
#include <vector>

namespace varnlog::platform {

struct HostAddresses {
  std::vector<std::string> addresses;  // as numbers
  std::string error;                   // where there are none
};

/// Asks the system, which may take as long as its name servers do. For HostLookUp.
[[nodiscard]] HostAddresses AddressesOf(const std::string& host);

}  // namespace varnlog::platform
