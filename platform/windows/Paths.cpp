#include <string_view>

#include "platform/Files.h"
#include "platform/windows/Access.h"
#include "platform/windows/System.h"

namespace varnlog::platform {
namespace {

constexpr DWORD kEverybody = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// Whether the system opens it with that right; that somebody else holds it says nothing about permissions.
bool MayOpen(const std::wstring& name, DWORD access, DWORD flags) {
  const SystemHandle file(
      CreateFileW(name.c_str(), access, kEverybody, nullptr, OPEN_EXISTING, flags, nullptr));
  return file || GetLastError() == ERROR_SHARING_VIOLATION;
}

std::filesystem::path Executable() {
  constexpr DWORD kLongestPath = 32768;
  std::wstring name(kLongestPath, L'\0');
  name.resize(GetModuleFileNameW(nullptr, name.data(), kLongestPath));
  return WithoutPrefix(name);
}

}  // namespace

std::filesystem::path ToPath(std::string_view text) {
  std::wstring path = Wide(text);
  for (wchar_t& c : path) {
    if (c == L'/') c = L'\\';
  }
  return path;
}

std::string FromPath(const std::filesystem::path& path) {
  return Narrow(path.native());
}

bool IsWritable(const std::filesystem::path& path) {
  const std::wstring name = NativeName(path);
  const DWORD attributes = GetFileAttributesW(name.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  // For a folder the attribute means something else.
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    return MayOpen(name, FILE_ADD_FILE, FILE_FLAG_BACKUP_SEMANTICS);
  return (attributes & FILE_ATTRIBUTE_READONLY) == 0 && MayOpen(name, GENERIC_READ | GENERIC_WRITE, 0);
}

bool MayBeChangedByOthers(const std::filesystem::path& path) {
  return OthersMayChange(path);
}

std::filesystem::path ExecutableFolder() {
  return Executable().parent_path();
}

std::string ExecutableName() {
  return FromPath(Executable().stem());
}

}  // namespace varnlog::platform
