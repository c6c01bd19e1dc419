#include "tests/faults/Launch.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "tests/Paths.h"
#include "tests/faults/Files.h"

namespace varnlog::faults {

namespace {

namespace fs = std::filesystem;

/// A run that takes longer hangs.
constexpr unsigned kLongestRun = 60;
constexpr int kCannotRun = 127;

fs::path WithEnding(const fs::path& path, const char* ending) {
  return fs::path(path) += ending;
}

void Catch(const fs::path& file, int descriptor) {
  constexpr int kMode = 0600;
  dup2(open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, kMode), descriptor);
}

[[noreturn]] void Become(const Launch& launch) {
  dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
  Catch(WithEnding(launch.output, ".out"), STDOUT_FILENO);
  Catch(WithEnding(launch.output, ".err"), STDERR_FILENO);
#ifdef VARNLOG_SANITIZED
  // What a sanitizer finds must not look like a failure that the program has told.
  setenv("ASAN_OPTIONS", "exitcode=99:verify_asan_link_order=0:detect_leaks=0", 1);
  setenv("UBSAN_OPTIONS", "exitcode=99:print_stacktrace=1", 1);
#endif
  for (const auto& [name, value] : launch.environment) setenv(name.c_str(), value.c_str(), 1);
  if (chdir(launch.folder.c_str()) != 0) _exit(kCannotRun);
  std::vector<std::string> words{VARNLOG_PROGRAM_DIR "/varnlogctl", "--folder", launch.program.string()};
  if (launch.arguments.starts_with("correct") || launch.arguments.starts_with("enter") ||
      launch.arguments == "adopt")
    words.front() = VARNLOG_TEST_PROGRAMS "/workstation";
  std::istringstream split(launch.arguments);
  for (std::string word; split >> word;) words.push_back(word);
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  alarm(kLongestRun);
  execv(argv.front(), argv.data());
  _exit(kCannotRun);
}

}  // namespace

Outcome Run(const Launch& launch) {
  const pid_t child = fork();
  if (child == 0) Become(launch);
  if (launch.killedAfter) {
    std::this_thread::sleep_for(*launch.killedAfter);
    kill(child, SIGKILL);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return {.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1,
          .signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0,
          .out = ReadFile(WithEnding(launch.output, ".out")),
          .err = ReadFile(WithEnding(launch.output, ".err"))};
}

std::string WrongEnding(const Outcome& outcome) {
  if (outcome.signal == SIGKILL) return "";  // it was told to
  if (outcome.signal != 0) return "ended by signal " + std::to_string(outcome.signal) + " " + outcome.err;
  if (outcome.status > 1) return "status " + std::to_string(outcome.status) + " " + outcome.err;
  if (outcome.status != 0 && outcome.err.empty() && outcome.out.empty()) return "failed without a word";
  return "";
}

}  // namespace varnlog::faults
