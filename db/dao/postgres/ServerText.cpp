#include "db/dao/postgres/ServerText.h"

#include <algorithm>

#include "db/dao/EngineError.h"

namespace varnlog::dao {

std::string ToServer(std::string_view text) {
  if (HasZeroOnServer(text))
    throw EngineError(ErrorNumber::kRuleViolated, "A server holds no text with the character U+E0001 in it.");
  std::string stored;
  stored.reserve(text.size());
  for (const char c : text) {
    if (c == '\0')
      stored += kZeroOnServer;
    else
      stored += c;
  }
  return stored;
}

std::string FromServer(std::string_view text) {
  std::string read;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t next = std::min(text.find(kZeroOnServer, at), text.size());
    read += text.substr(at, next - at);
    if (next < text.size()) read += '\0';
    at = next + kZeroOnServer.size();
  }
  return read;
}

}  // namespace varnlog::dao
