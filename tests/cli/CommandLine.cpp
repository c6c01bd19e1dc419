#include "tests/cli/CommandLine.h"

#ifdef _WIN32
#include <utility>
#include <windows.h>

#include "platform/Files.h"
#else
#include <cstdlib>
#include <sys/wait.h>
#endif

namespace varnlog::cli {

#ifdef _WIN32

namespace {

// As a shell tells words apart, each in quotation marks.
std::wstring Words(const std::string& line) {
  std::string words;
  std::string word;
  char quote = '\0';
  bool isWord = false;
  const auto ends = [&] {
    if (std::exchange(isWord, false)) words += "\"" + std::exchange(word, {}) + "\" ";
  };
  for (const char each : line) {
    if (quote == '\0' && each == ' ') {
      ends();
    } else if (quote == '\0' && (each == '\'' || each == '"')) {
      quote = each;
      isWord = true;
    } else if (each == quote) {
      quote = '\0';
    } else {
      if (each == '"') word += '\\';
      word += each;
      isWord = true;
    }
  }
  ends();
  return platform::ToPath(words).native();
}

// What a child inherits.
HANDLE Given(const std::filesystem::path& path, DWORD access, DWORD disposition) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  return CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, disposition, 0,
                     nullptr);
}

}  // namespace

int Run(const std::string& line, const std::filesystem::path& out, const std::filesystem::path& err) {
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = Given("NUL", GENERIC_READ, OPEN_EXISTING);
  start.hStdOutput = Given(out, GENERIC_WRITE, CREATE_ALWAYS);
  start.hStdError = Given(err, GENERIC_WRITE, CREATE_ALWAYS);
  PROCESS_INFORMATION process{};
  std::wstring words = Words(line);
  DWORD status = static_cast<DWORD>(-1);
  if (CreateProcessW(nullptr, words.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process) !=
      0) {
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &status);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
  }
  for (const HANDLE each : {start.hStdInput, start.hStdOutput, start.hStdError}) CloseHandle(each);
  return static_cast<int>(status);
}

#else

int Run(const std::string& line, const std::filesystem::path& out, const std::filesystem::path& err) {
  const std::string whole = "{ " + line + "; } </dev/null >'" + out.string() + "' 2>'" + err.string() + "'";
  const int result =
      std::system(whole.c_str());  // NOLINT(bugprone-command-processor): it is the shell we want
  return WIFEXITED(result) ? WEXITSTATUS(result) : -1;
}

#endif

}  // namespace varnlog::cli
