#include "platform/Author.h"

#include <array>
#include <charconv>
#include <fstream>
#include <optional>
#include <pwd.h>
#include <sstream>
#include <unistd.h>
#include <vector>

namespace varnlog::platform {

namespace {

void ReadAccount(Author& author) {
  std::vector<char> buffer(16384);
  passwd entry{};
  passwd* found = nullptr;
  const uid_t user = getuid();
  if (getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr) {
    author.account = std::to_string(user);
    return;
  }
  author.account = found->pw_name;
  // Behind the name stand room and telephone numbers.
  const std::string described = found->pw_gecos == nullptr ? "" : found->pw_gecos;
  author.fullName = described.substr(0, described.find(','));
}

// When the process began, in ticks since the system started. A number of a process is given out again.
std::string StartOf(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string line;
  if (!std::getline(file, line)) return {};
  // The command may hold blanks and brackets; it ends with the last one.
  const auto command = line.rfind(')');
  if (command == std::string::npos) return {};
  std::istringstream fields(line.substr(command + 1));
  constexpr int kFieldsBefore = 19;
  std::string field;
  for (int i = 0; i < kFieldsBefore; ++i) fields >> field;
  fields >> field;
  return field;
}

std::string SystemStart() {
  std::ifstream file("/proc/sys/kernel/random/boot_id");
  std::string id;
  std::getline(file, id);
  return id.substr(0, id.find('-'));
}

std::string RunOf(pid_t process) {
  return std::to_string(process) + "-" + StartOf(process) + "-" + SystemStart();
}

}  // namespace

Author CurrentAuthor() {
  Author author;
  ReadAccount(author);
  std::array<char, 256> name{};
  if (gethostname(name.data(), name.size() - 1) == 0) author.workstation = name.data();
  author.run = RunOf(getpid());
  return author;
}

bool IsRunning(std::string_view run) {
  pid_t process = 0;
  const auto [end, error] = std::from_chars(run.data(), run.data() + run.size(), process);
  return error == std::errc() && process > 0 && RunOf(process) == run;
}

}  // namespace varnlog::platform
