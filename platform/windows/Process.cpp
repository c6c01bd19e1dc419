#include "platform/Process.h"

#include <array>
#include <filesystem>

#include "platform/windows/System.h"

namespace varnlog::platform {
namespace {

/// As the usual rules of the C library read it back: quotes are escaped, and so are backslashes before one.
void AppendQuoted(const std::wstring& argument, std::wstring& line) {
  if (!line.empty()) line.push_back(L' ');
  if (!argument.empty() && argument.find_first_of(L" \t\n\v\"") == std::wstring::npos) {
    line += argument;
    return;
  }
  line.push_back(L'"');
  std::size_t backslashes = 0;
  for (const wchar_t c : argument) {
    if (c == L'"') line.append(backslashes + 1, L'\\');
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    line.push_back(c);
  }
  line.append(backslashes, L'\\');
  line.push_back(L'"');
}

/// A program without a folder is the system's own, not one that somebody has put into the current folder.
std::wstring WithFolder(const std::wstring& program) {
  if (program.find_first_of(L"\\/:") != std::wstring::npos) return program;
  std::array<wchar_t, MAX_PATH> folder{};
  GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size()));
  const std::wstring path = std::wstring(folder.data()) + L"\\" + program;
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES ? path : program;
}

}  // namespace

bool SystemLauncher::Start(const std::vector<std::string>& command) {
  if (command.empty()) return false;
  std::wstring line;
  AppendQuoted(WithFolder(Wide(command.front())), line);
  for (std::size_t i = 1; i < command.size(); ++i) AppendQuoted(Wide(command[i]), line);
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION started{};
  if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE,
                     CREATE_NO_WINDOW | CREATE_NEW_PROCESS_GROUP, nullptr, nullptr, &start,
                     &started) == FALSE)
    return false;
  CloseHandle(started.hThread);
  CloseHandle(started.hProcess);
  return true;
}

std::string EnvironmentVariable(const char* name) {
  const std::wstring wide = Wide(name);
  const DWORD room = GetEnvironmentVariableW(wide.c_str(), nullptr, 0);
  std::wstring value(room, L'\0');
  const DWORD length = GetEnvironmentVariableW(wide.c_str(), value.data(), room);
  return length < room ? Narrow({value.data(), length}) : std::string();
}

std::string ProgramFile(std::string_view name) {
  return std::string(name) + ".exe";
}

bool HasComponentRegistration() {
  return true;
}

std::vector<std::string> ProgramArguments(int /*count*/, char** /*arguments*/) {
  int count = 0;
  wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
  const SystemMemory owner(wide);
  std::vector<std::string> arguments;
  for (int i = 0; i < count; ++i) arguments.push_back(Narrow(wide[i]));
  return arguments;
}

}  // namespace varnlog::platform
