#pragma once

#include <string>
#include <string_view>

namespace varnlog::dao {

/// A server holds no text with the character 0 in it. There U+E0001 stands for it: a sign for programs that
/// no writing has any more, and that the order of texts passes over like the character 0 itself.
inline constexpr std::string_view kZeroOnServer = "\xF3\xA0\x80\x81";

/// The text as a server is given it. Throws kRuleViolated for one with U+E0001 in it.
[[nodiscard]] std::string ToServer(std::string_view text);
/// Whether FromServer() would change the text.
[[nodiscard]] inline bool HasZeroOnServer(std::string_view text) {
  return text.find(kZeroOnServer.front()) != std::string_view::npos &&
         text.find(kZeroOnServer) != std::string_view::npos;
}
[[nodiscard]] std::string FromServer(std::string_view text);

}  // namespace varnlog::dao
