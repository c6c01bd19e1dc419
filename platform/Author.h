#pragma once

#include <string>
#include <string_view>

namespace varnlog::platform {

/// Who works where: kept with every change of the log.
struct Author {
  std::string account;      // as the operating system knows it
  std::string fullName;     // of the account's owner; may be ""
  std::string workstation;  // its name in the network
  std::string program;      // name and version
  std::string run;          // this run of the program, told from every other on this workstation
};

/// The account and workstation that this process runs under; `program` is left to the caller.
[[nodiscard]] Author CurrentAuthor();

/// Whether a run of a program on this workstation (Author::run) is still going on.
[[nodiscard]] bool IsRunning(std::string_view run);

}  // namespace varnlog::platform
