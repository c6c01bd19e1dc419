#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

// The first one is what all others need.
// clang-format off
#include <windows.h>
#include <aclapi.h>
#include <lm.h>
#include <sddl.h>
#define SECURITY_WIN32
#include <security.h>
#include <shellapi.h>
#include <shobjidl.h>
// clang-format on

// The system's header gives its functions other names by macros; these would hit functions of our own.
#undef CopyFile
#undef DeleteFile
#undef MoveFile
#undef ReplaceFile

namespace varnlog::platform {

/// The system's form of a UTF-8 text and back; what is malformed becomes U+FFFD.
[[nodiscard]] std::wstring Wide(std::string_view text);
[[nodiscard]] std::string Narrow(std::wstring_view text);

/// An error of the system, comparable with std::errc, with a UTF-8 text in the user's language.
[[nodiscard]] std::error_code ErrorOf(DWORD code);
[[nodiscard]] inline std::error_code LastError() {
  return ErrorOf(GetLastError());
}

/// Absolute, and in the form that may be longer than 260 characters where it has to be.
[[nodiscard]] std::wstring NativeName(const std::filesystem::path& path);

/// The same path without that form's prefix.
[[nodiscard]] std::wstring WithoutPrefix(std::wstring path);

/// A handle that its destructor closes.
class SystemHandle {
 public:
  explicit SystemHandle(HANDLE handle) : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
  ~SystemHandle() {
    if (handle_ != nullptr) CloseHandle(handle_);
  }
  SystemHandle(SystemHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  SystemHandle& operator=(SystemHandle&&) = delete;
  [[nodiscard]] explicit operator bool() const { return handle_ != nullptr; }
  [[nodiscard]] HANDLE get() const { return handle_; }

 private:
  HANDLE handle_;
};

/// Memory that the system has given and takes back with LocalFree.
class SystemMemory {
 public:
  explicit SystemMemory(void* memory = nullptr) : memory_(memory) {}
  ~SystemMemory() {
    if (memory_ != nullptr) LocalFree(memory_);
  }
  SystemMemory(const SystemMemory&) = delete;
  SystemMemory& operator=(const SystemMemory&) = delete;
  [[nodiscard]] void** address() { return &memory_; }

 private:
  void* memory_;
};

}  // namespace varnlog::platform
