#include "bench/Installation.h"

#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <spawn.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/CodePage.h"
#include "tools/exchange/ExchangeRecord.h"
#include "tools/exchange/ExposureGenerator.h"

namespace varnlog::bench {

namespace fs = std::filesystem;

namespace {

constexpr double kBytesPerMegabyte = 1024.0 * 1024.0;

/// Removed when the benchmarks end.
struct ScratchFolder {
  fs::path path = fs::temp_directory_path() / ("varnlog-bench-" + std::to_string(getpid()));
  ScratchFolder() { fs::create_directories(path); }
  ~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
  }
};

const fs::path& Scratch() {
  static const ScratchFolder folder;
  return folder.path;
}

}  // namespace

Installation::Installation(const std::string& name) : root_(Scratch() / name) {
  fs::create_directories(ProgramFolder());
  fs::create_directories(root_ / "Data");
  for (const char* file : {"varnlogctl", "verbalo.mdb", "system.mdw", "varnlog.md0"}) {
    fs::copy_file(fs::path(VARNLOG_PROGRAM_DIR) / file, ProgramFolder() / file,
                  fs::copy_options::overwrite_existing);
  }
  fs::copy_file(fs::path(VARNLOG_TOOLS_DIR) / "KVFILEDB.DLL", root_ / "KVFILEDB.DLL",
                fs::copy_options::overwrite_existing);
}

Installation::~Installation() {
  std::error_code ignored;
  fs::remove_all(root_, ignored);
}

void Installation::Clear() {
  for (const fs::directory_entry& entry : fs::directory_iterator(root_ / "Data")) fs::remove(entry.path());
}

Installation::Run Installation::Ctl(std::vector<std::string> arguments) const {
  const std::string program = (ProgramFolder() / "varnlogctl").string();
  arguments.insert(arguments.begin(), program);
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);

  const auto begin = std::chrono::steady_clock::now();
  pid_t child = 0;
  if (posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), environ) != 0) {
    throw std::runtime_error("cannot start " + program);
  }
  posix_spawn_file_actions_destroy(&actions);
  rusage usage{};
  int status = 0;
  wait4(child, &status, 0, &usage);
  Run run;
  run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  run.peakMegabytes = static_cast<double>(usage.ru_maxrss) * 1024.0 / kBytesPerMegabyte;
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

std::string FreshRecords(std::int64_t count, std::uint64_t seed, int startYear) {
  tools::GeneratorOptions options;
  options.count = count;
  options.seed = seed;
  options.start = platform::DateTime::FromSerial(startYear, 1, 5);
  options.informationPercent = 0;
  options.repeatedPercent = 0;
  options.invalidPercent = 0;
  tools::ExposureGenerator generator(options);
  const auto oem = platform::CodePage::Oem("D");
  std::string bytes;
  for (std::int64_t i = 0; i < count; ++i) tools::AppendRecord(generator.Next(), oem, bytes);
  return bytes;
}

const fs::path& RecordFile(std::int64_t count, std::uint64_t seed, int startYear) {
  static std::map<std::string, fs::path> made;
  const std::string name =
      std::to_string(count) + "-" + std::to_string(seed) + "-" + std::to_string(startYear) + ".sdx";
  const auto [entry, isNew] = made.try_emplace(name, Scratch() / name);
  if (isNew) std::ofstream(entry->second, std::ios::binary) << FreshRecords(count, seed, startYear);
  return entry->second;
}

void CopyInto(const fs::path& source, const fs::path& target) {
  fs::copy_file(source, target, fs::copy_options::overwrite_existing);
}

}  // namespace varnlog::bench
