#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace varnlog::platform {

/// A library that the system's programs share, found where the system looks for those; where systems have
/// none such, it lies beside the program. {"libpq", 5} is libpq.so.5 on the one and libpq.dll on the other.
struct SystemLibrary {
  const char* name;
  int version;
};

/// A library loaded at run time; unloaded by the destructor.
class SharedLibrary {
 public:
  /// Nothing loaded when the file is missing or is no library of this system; Error() says why.
  explicit SharedLibrary(const std::filesystem::path& path);
  explicit SharedLibrary(SystemLibrary library);
  ~SharedLibrary();
  SharedLibrary(const SharedLibrary&) = delete;
  SharedLibrary& operator=(const SharedLibrary&) = delete;

  [[nodiscard]] const std::string& Error() const { return error_; }
  /// Not loaded because it is made for programs of the other width, 32 bits instead of 64, of this system.
  [[nodiscard]] bool IsForOtherWidth() const { return isForOtherWidth_; }

  /// The exported function, or nullptr.
  template <typename Function>
  [[nodiscard]] Function* Symbol(const char* name) const {
    return reinterpret_cast<Function*>(Address(name));
  }

 private:
  void Load(const std::filesystem::path& path);
  [[nodiscard]] void* Address(const char* name) const;
  void* handle_ = nullptr;
  std::string error_;
  bool isForOtherWidth_ = false;
};

/// What the helper beside the program, which is made for the other width, is told by such a library: see
/// platform/windows/library32. It works in `folder`. Nothing when there is no answer within ten seconds, and
/// where the system has no such libraries.
[[nodiscard]] std::optional<std::string> AskForOtherWidth(const std::filesystem::path& library,
                                                          const std::filesystem::path& folder);

}  // namespace varnlog::platform
