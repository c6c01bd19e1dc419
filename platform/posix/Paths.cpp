#include "platform/Files.h"

namespace varnlog::platform {
namespace {

/// Empty when the system does not say.
std::filesystem::path Executable() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error);
}

}  // namespace

std::filesystem::path ToPath(std::string_view text) {
  std::string path(text);
  for (char& c : path) {
    if (c == '\\') c = '/';
  }
  return path;
}

std::filesystem::path ExecutableFolder() {
  const std::filesystem::path executable = Executable();
  std::error_code ignored;
  return executable.empty() ? std::filesystem::current_path(ignored) : executable.parent_path();
}

std::string ExecutableName() {
  return FromPath(Executable().stem());
}

}  // namespace varnlog::platform
