#include "platform/FileNames.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>
#include <vector>

#include "platform/windows/System.h"

namespace varnlog::platform {
namespace {

/// Virus scanners and indexers open a new file for a moment, and then it can neither be renamed nor removed.
bool IsHeldByOthers(DWORD code) {
  return code == ERROR_SHARING_VIOLATION || code == ERROR_ACCESS_DENIED || code == ERROR_LOCK_VIOLATION ||
         code == ERROR_USER_MAPPED_FILE;
}

/// Repeats a call for two seconds while others seem to hold the file.
template <typename Call>
std::error_code WithPatience(const Call& call) {
  using namespace std::chrono_literals;
  const auto end = std::chrono::steady_clock::now() + 2s;
  for (;;) {
    if (call()) return {};
    const DWORD code = GetLastError();
    if (!IsHeldByOthers(code) || std::chrono::steady_clock::now() >= end) return ErrorOf(code);
    std::this_thread::sleep_for(10ms);
  }
}

bool IsFolder(const std::wstring& name) {
  const DWORD attributes = GetFileAttributesW(name.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Known to Windows from 10 on, to the compiler's headers only for later versions.
constexpr auto kRenameInformation = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
constexpr DWORD kReplaceIfExists = 1;
constexpr DWORD kAtOnce = 2;
struct RenameInformation {
  DWORD flags;
  HANDLE root;
  DWORD nameLength;
  std::array<wchar_t, 1> name;
};

/// A file that readers have open who allow its removal: they keep the old one, and the name passes to the new
/// one in one step. Not on every file system.
bool ReplaceOpenFile(const std::wstring& from, const std::wstring& to) {
  constexpr DWORD kEverybody = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const SystemHandle file(CreateFileW(from.c_str(), DELETE | SYNCHRONIZE | GENERIC_WRITE, kEverybody, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return false;
  const std::size_t bytes = to.size() * sizeof(wchar_t);
  std::vector<std::byte> buffer(sizeof(RenameInformation) + bytes);
  auto* const rename = reinterpret_cast<RenameInformation*>(buffer.data());
  rename->flags = kReplaceIfExists | kAtOnce;
  rename->nameLength = static_cast<DWORD>(bytes);
  std::ranges::copy(to, rename->name.data());
  if (SetFileInformationByHandle(file.get(), kRenameInformation, rename, static_cast<DWORD>(buffer.size())) ==
      FALSE) {
    // As the plain rename has said before.
    SetLastError(ERROR_ACCESS_DENIED);
    return false;
  }
  // The name is on the disk when the file is.
  return FlushFileBuffers(file.get()) != FALSE;
}

bool IsLinkName(const std::wstring& name) {
  WIN32_FIND_DATAW found{};
  HANDLE search = FindFirstFileW(name.c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return false;
  FindClose(search);
  return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         IsReparseTagNameSurrogate(found.dwReserved0);
}

}  // namespace

std::error_code GiveName(const std::filesystem::path& source, const std::filesystem::path& target,
                         IfTaken ifTaken) {
  const std::wstring from = NativeName(source);
  const std::wstring to = NativeName(target);
  // Without the flag that lets the system copy to another volume: a copy can be seen half-made.
  const DWORD flags =
      MOVEFILE_WRITE_THROUGH | (ifTaken == IfTaken::kReplace ? DWORD{MOVEFILE_REPLACE_EXISTING} : 0U);
  return WithPatience([&] {
    if (MoveFileExW(from.c_str(), to.c_str(), flags) != FALSE) return true;
    if (ifTaken == IfTaken::kFail || !IsHeldByOthers(GetLastError())) return false;
    return ReplaceOpenFile(from, to);
  });
}

std::error_code AddName(const std::filesystem::path& path, const std::filesystem::path& second) {
  return CreateHardLinkW(NativeName(second).c_str(), NativeName(path).c_str(), nullptr) != FALSE
             ? std::error_code()
             : LastError();
}

std::error_code RemoveName(const std::filesystem::path& path) {
  const std::wstring name = NativeName(path);
  if (!IsFolder(name)) return WithPatience([&] { return DeleteFileW(name.c_str()) != FALSE; });
  if (!IsLinkName(name)) return std::make_error_code(std::errc::is_a_directory);
  return RemoveDirectoryW(name.c_str()) != FALSE ? std::error_code() : LastError();
}

bool IsLink(const std::filesystem::path& path) {
  return IsLinkName(NativeName(path));
}

std::filesystem::path BehindLinks(const std::filesystem::path& path) {
  if (!IsLink(path)) return path;
  constexpr DWORD kEverybody = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const SystemHandle file(CreateFileW(NativeName(path).c_str(), FILE_READ_ATTRIBUTES, kEverybody, nullptr,
                                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!file) return path;
  const DWORD room = GetFinalPathNameByHandleW(file.get(), nullptr, 0, FILE_NAME_NORMALIZED);
  std::wstring name(room, L'\0');
  name.resize(GetFinalPathNameByHandleW(file.get(), name.data(), room, FILE_NAME_NORMALIZED));
  return name.empty() || name.size() > room ? path : std::filesystem::path(WithoutPrefix(name));
}

// A rename is on the disk when it returns. Nobody can be told to put a removal there; the file system's own
// journal keeps their order.
std::error_code FlushFolder(const std::filesystem::path& /*folder*/) {
  return {};
}

}  // namespace varnlog::platform
