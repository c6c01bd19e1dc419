#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace varnlog::dao {

/// The first line of a file that stands where a log stands and says on which server the log is.
inline constexpr std::string_view kLinkMark = "[VarnlogServer]";

/// What a link file says. There is no password in it: the server's client library has means of its own.
struct LinkFile {
  std::vector<std::string> hosts;  // in the order in which they are tried; one "" for this machine
  std::vector<std::string> ports;  // one for each host, "" for the usual one
  std::string database = "varnlog";
  std::string schema = "varnlog";
  std::string user;
  std::string service;
  std::string sslMode;
  std::string applicationName = "varnlog";
};

/// Whether a file that begins with these bytes is a link file.
[[nodiscard]] bool IsLinkStart(std::string_view start);

/// Throws kUnrecognisedFormat with a text that names the line: bytes that are no text, a line that is no
/// setting, an unknown setting or one that is given twice, a connection that is not verified to another
/// machine.
[[nodiscard]] LinkFile ParseLinkFile(std::string_view content, const std::string& path);
[[nodiscard]] LinkFile ReadLinkFile(const std::string& path);

}  // namespace varnlog::dao
