#include <algorithm>
#include <grp.h>
#include <pwd.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "platform/Files.h"

namespace varnlog::platform {
namespace {

/// Empty when the system does not say.
std::filesystem::path Executable() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error);
}

std::string UserName(uid_t user) {
  const passwd* entry = getpwuid(user);
  return entry == nullptr ? std::string() : entry->pw_name;
}

/// Many systems give each user a group of the same name that nobody else is in.
bool HasOthers(gid_t group, uid_t owner) {
  const std::vector<std::string> own = {UserName(owner), UserName(geteuid()), UserName(0)};
  const ::group* entry = getgrgid(group);
  if (entry == nullptr || std::ranges::find(own, entry->gr_name) == own.end()) return true;
  for (char** member = entry->gr_mem; *member != nullptr; ++member) {
    if (std::ranges::find(own, *member) == own.end()) return true;
  }
  return false;
}

}  // namespace

std::filesystem::path ToPath(std::string_view text) {
  std::string path(text);
  for (char& c : path) {
    if (c == '\\') c = '/';
  }
  return path;
}

std::string FromPath(const std::filesystem::path& path) {
  return path.native();
}

bool IsWritable(const std::filesystem::path& path) {
  using std::filesystem::perms;
  std::error_code error;
  const perms permissions = std::filesystem::status(path, error).permissions();
  const perms anyWrite = perms::owner_write | perms::group_write | perms::others_write;
  return !error && (permissions & anyWrite) != perms::none && access(path.c_str(), R_OK | W_OK) == 0;
}

bool MayBeChangedByOthers(const std::filesystem::path& path) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) return true;
  if ((info.st_mode & S_IWOTH) != 0) return true;
  return (info.st_mode & S_IWGRP) != 0 && HasOthers(info.st_gid, info.st_uid);
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
