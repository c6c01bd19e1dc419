#include "platform/Process.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace varnlog::platform {
namespace {

/// Runs in the grandchild: nothing here may allocate, another thread may have held the heap's lock.
[[noreturn]] void Execute(char* const* arguments, int report) {
  const int null = open("/dev/null", O_RDWR);
  if (null >= 0) {
    dup2(null, STDIN_FILENO);
    dup2(null, STDOUT_FILENO);
    dup2(null, STDERR_FILENO);
  }
  execvp(arguments[0], arguments);
  const int error = errno;
  static_cast<void>(!write(report, &error, sizeof error));
  _exit(127);
}

/// The program becomes a child of the system's first process, so that nobody here need wait for it.
[[noreturn]] void StartGrandchild(char* const* arguments, int report) {
  setsid();
  const pid_t grandchild = fork();
  if (grandchild == 0) Execute(arguments, report);
  if (grandchild < 0) {
    const int error = errno;
    static_cast<void>(!write(report, &error, sizeof error));
  }
  _exit(0);
}

void WaitFor(pid_t child) {
  while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
  }
}

/// Nothing arrives when the program was started: its start closed the pipe's other end.
bool NothingReported(int report) {
  int error = 0;
  ssize_t got = 0;
  do {
    got = read(report, &error, sizeof error);
  } while (got < 0 && errno == EINTR);
  return got == 0;
}

/// As the system takes them; valid as long as `words` are.
std::vector<char*> ArgumentsOf(const std::vector<std::string>& words) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  return arguments;
}

}  // namespace

bool SystemLauncher::Start(const std::vector<std::string>& command) {
  if (command.empty()) return false;
  const std::vector<char*> arguments = ArgumentsOf(command);
  std::array<int, 2> report{};
  if (pipe2(report.data(), O_CLOEXEC) != 0) return false;
  const pid_t child = fork();
  if (child == 0) StartGrandchild(arguments.data(), report[1]);
  close(report[1]);
  if (child > 0) WaitFor(child);
  const bool started = child > 0 && NothingReported(report[0]);
  close(report[0]);
  return started;
}

std::error_code GoOnAs(const std::filesystem::path& program, const std::vector<std::string>& arguments) {
  execv(program.c_str(), ArgumentsOf(arguments).data());
  return {errno, std::generic_category()};
}

std::string EnvironmentVariable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

std::vector<std::string> ProgramArguments(int count, char** arguments) {
  return {arguments, arguments + count};
}

std::string ProgramFile(std::string_view name) {
  return std::string(name);
}

bool HasComponentRegistration() {
  return false;
}

}  // namespace varnlog::platform
