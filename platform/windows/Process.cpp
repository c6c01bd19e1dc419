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

std::wstring CommandLine(const std::wstring& program, const std::vector<std::string>& command) {
  std::wstring line;
  AppendQuoted(program, line);
  for (std::size_t i = 1; i < command.size(); ++i) AppendQuoted(Wide(command[i]), line);
  return line;
}

/// Whoever ends this process ends all that is in the job, too.
SystemHandle JobOfThisProcess() {
  SystemHandle job(CreateJobObjectW(nullptr, nullptr));
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
  return job;
}

/// The console tells both processes; what to do about it is decided by the one that works.
BOOL WINAPI LeaveToTheOther(DWORD /*event*/) {
  return TRUE;
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
  std::wstring line = CommandLine(WithFolder(Wide(command.front())), command);
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

// Nothing here takes another program's place, so this process waits for it.
std::error_code GoOnAs(const std::filesystem::path& program, const std::vector<std::string>& arguments) {
  const SystemHandle job = JobOfThisProcess();
  std::wstring line = CommandLine(program.native(), arguments);
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  start.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
  start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION started{};
  if (CreateProcessW(NativeName(program).c_str(), line.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED,
                     nullptr, nullptr, &start, &started) == FALSE)
    return LastError();
  SetConsoleCtrlHandler(LeaveToTheOther, TRUE);
  AssignProcessToJobObject(job.get(), started.hProcess);
  ResumeThread(started.hThread);
  WaitForSingleObject(started.hProcess, INFINITE);
  DWORD status = 1;
  GetExitCodeProcess(started.hProcess, &status);
  ExitProcess(status);
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
