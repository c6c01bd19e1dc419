#include "platform/SharedLibrary.h"

#include "platform/Files.h"
#include "platform/windows/System.h"

namespace varnlog::platform {

SharedLibrary::SharedLibrary(const std::filesystem::path& path) {
  Load(path);
}

SharedLibrary::SharedLibrary(SystemLibrary library) {
  Load(ExecutableFolder() / ToPath(std::string(library.name) + ".dll"));
}

void SharedLibrary::Load(const std::filesystem::path& path) {
  // No message box about a library that is missing or broken.
  DWORD before = 0;
  SetThreadErrorMode(SEM_FAILCRITICALERRORS, &before);
  // With the whole path the system looks for what the library needs beside the library.
  handle_ = LoadLibraryExW(NativeName(path).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  const DWORD code = GetLastError();
  SetThreadErrorMode(before, nullptr);
  if (handle_ != nullptr) return;
  error_ = ErrorOf(code).message();
  isForOtherWidth_ = code == ERROR_BAD_EXE_FORMAT;
}

SharedLibrary::~SharedLibrary() {
  if (handle_ != nullptr) FreeLibrary(static_cast<HMODULE>(handle_));
}

void* SharedLibrary::Address(const char* name) const {
  if (handle_ == nullptr) return nullptr;
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

}  // namespace varnlog::platform
