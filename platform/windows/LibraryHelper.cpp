#include <array>

#include "platform/Files.h"
#include "platform/SharedLibrary.h"
#include "platform/windows/System.h"

namespace varnlog::platform {
namespace {

constexpr const char* kHelper = "varnlog-library32.exe";
constexpr DWORD kPatience = 10'000;
constexpr DWORD kPipeSize = 4096;  // more than any answer, so that the helper never waits for its reader

struct Pipe {
  SystemHandle reader;
  SystemHandle writer;
};

/// Only the writing end is handed on.
std::optional<Pipe> MakePipe() {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  HANDLE reader = nullptr;
  HANDLE writer = nullptr;
  if (CreatePipe(&reader, &writer, &inherited, kPipeSize) == FALSE) return std::nullopt;
  SetHandleInformation(reader, HANDLE_FLAG_INHERIT, 0);
  return Pipe{SystemHandle(reader), SystemHandle(writer)};
}

/// Whether the process has ended well; it has ended in any case.
bool EndsWell(HANDLE process) {
  DWORD status = 1;
  if (WaitForSingleObject(process, kPatience) != WAIT_OBJECT_0) {
    TerminateProcess(process, status);
    return false;
  }
  return GetExitCodeProcess(process, &status) != FALSE && status == 0;
}

}  // namespace

std::optional<std::string> AskForOtherWidth(const std::filesystem::path& library,
                                            const std::filesystem::path& folder) {
  const std::optional<Pipe> pipe = MakePipe();
  if (!pipe) return std::nullopt;
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdOutput = pipe->writer.get();
  const std::wstring program = (ExecutableFolder() / kHelper).native();
  // No file name has a quotation mark.
  std::wstring line = L"\"" + program + L"\" \"" + library.native() + L"\"";
  PROCESS_INFORMATION started{};
  if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                     folder.native().c_str(), &start, &started) == FALSE)
    return std::nullopt;
  const SystemHandle thread(started.hThread);
  const SystemHandle process(started.hProcess);
  if (!EndsWell(process.get())) return std::nullopt;
  std::array<char, kPipeSize> answer{};
  DWORD available = 0;
  DWORD got = 0;
  // Reading an empty pipe would wait for ever, because its writing end is open here, too.
  if (PeekNamedPipe(pipe->reader.get(), nullptr, 0, nullptr, &available, nullptr) == FALSE ||
      available == 0 || ReadFile(pipe->reader.get(), answer.data(), kPipeSize, &got, nullptr) == FALSE)
    return std::nullopt;
  return std::string(answer.data(), got);
}

}  // namespace varnlog::platform
