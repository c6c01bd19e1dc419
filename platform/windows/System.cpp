#include "platform/windows/System.h"

namespace varnlog::platform {
namespace {

class SystemErrors final : public std::error_category {
 public:
  [[nodiscard]] const char* name() const noexcept override { return "windows"; }

  [[nodiscard]] std::string message(int code) const override {
    wchar_t* text = nullptr;
    constexpr DWORD kFlags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    const DWORD length = FormatMessageW(kFlags, nullptr, static_cast<DWORD>(code), 0,
                                        reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    const SystemMemory owner(text);
    std::string message = Narrow({text, length});
    while (!message.empty() && (message.back() <= ' ' || message.back() == '.')) message.pop_back();
    return message.empty() ? "error " + std::to_string(code) : message;
  }

  [[nodiscard]] std::error_condition default_error_condition(int code) const noexcept override {
    switch (code) {
      case ERROR_DELETE_PENDING:
        return std::errc::no_such_file_or_directory;
      case ERROR_DIRECTORY:
        return std::errc::not_a_directory;
      case ERROR_INVALID_NAME:
        return std::errc::invalid_argument;
      case ERROR_BAD_NETPATH:
      case ERROR_BAD_NET_NAME:
        return std::errc::no_such_file_or_directory;
      default:
        return std::system_category().default_error_condition(code);
    }
  }
};

constexpr std::wstring_view kPrefix = L"\\\\?\\";
constexpr std::wstring_view kServerPrefix = L"\\\\?\\UNC\\";

}  // namespace

std::wstring Wide(std::string_view text) {
  const int size = static_cast<int>(text.size());
  const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), length);
  return wide;
}

std::string Narrow(std::wstring_view text) {
  const int size = static_cast<int>(text.size());
  const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), size, narrow.data(), length, nullptr, nullptr);
  return narrow;
}

std::error_code ErrorOf(DWORD code) {
  static const SystemErrors category;
  return {static_cast<int>(code), category};
}

std::wstring NativeName(const std::filesystem::path& path) {
  // The names of folders must leave room for a short file name.
  constexpr std::size_t kLongestPlain = 247;
  const std::wstring& given = path.native();
  if (given.starts_with(kPrefix)) return given;
  const DWORD room = GetFullPathNameW(given.c_str(), 0, nullptr, nullptr);
  std::wstring full(room, L'\0');
  full.resize(GetFullPathNameW(given.c_str(), room, full.data(), nullptr));
  if (full.empty() || full.size() > room) return given;
  if (full.size() <= kLongestPlain || full.starts_with(L"\\\\.\\")) return full;
  if (full.starts_with(L"\\\\")) return std::wstring(kServerPrefix) + full.substr(2);
  return std::wstring(kPrefix) + full;
}

std::wstring WithoutPrefix(std::wstring path) {
  if (path.starts_with(kServerPrefix)) return L"\\\\" + path.substr(kServerPrefix.size());
  return path.starts_with(kPrefix) ? path.substr(kPrefix.size()) : path;
}

}  // namespace varnlog::platform
