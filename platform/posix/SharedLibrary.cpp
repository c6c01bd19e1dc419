#include "platform/SharedLibrary.h"

#include <dlfcn.h>

namespace varnlog::platform {

SharedLibrary::SharedLibrary(const std::filesystem::path& path) {
  // A bare name would be searched for in the system's folders; only the file that was named is meant.
  std::error_code ignored;
  const std::filesystem::path absolute = std::filesystem::absolute(path, ignored);
  Load(absolute);
}

SharedLibrary::SharedLibrary(SystemLibrary library) {
  Load(std::string(library.name) + ".so." + std::to_string(library.version));
}

void SharedLibrary::Load(const std::filesystem::path& path) {
  handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ == nullptr) {
    const char* reason = dlerror();
    error_ = reason == nullptr ? "the library cannot be loaded" : reason;
  }
}

SharedLibrary::~SharedLibrary() {
  if (handle_ != nullptr) dlclose(handle_);
}

std::optional<std::string> AskForOtherWidth(const std::filesystem::path& /*library*/,
                                            const std::filesystem::path& /*folder*/) {
  return std::nullopt;
}

void* SharedLibrary::Address(const char* name) const {
  return handle_ == nullptr ? nullptr : dlsym(handle_, name);
}

}  // namespace varnlog::platform
