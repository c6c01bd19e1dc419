#include <unistd.h>

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

bool IsWritable(const std::filesystem::path& path) {
  using std::filesystem::perms;
  std::error_code error;
  const perms permissions = std::filesystem::status(path, error).permissions();
  const perms anyWrite = perms::owner_write | perms::group_write | perms::others_write;
  return !error && (permissions & anyWrite) != perms::none && access(path.c_str(), R_OK | W_OK) == 0;
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
