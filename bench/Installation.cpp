#include "bench/Installation.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <memory>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "platform/CodePage.h"
#include "tools/exchange/ExchangeRecord.h"
#include "tools/exchange/ExposureGenerator.h"

namespace varnlog::bench {

namespace fs = std::filesystem;

namespace {

constexpr double kKilobytesPerMegabyte = 1024.0;
constexpr std::chrono::milliseconds kPollInterval(5);

/// The most memory that a running process has held so far, in megabytes; 0 when it is gone.
double HighWaterMark(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::stod(line.substr(6)) / kKilobytesPerMegabyte;
  }
  return 0;
}

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
  for (const char* file : {"varnlogctl", "varnlogdocs", "verbalo.mdb", "system.mdw", "varnlog.md0"}) {
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
  arguments.insert(arguments.begin(), (ProgramFolder() / "varnlogctl").string());
  return Spawn(std::move(arguments));
}

Installation::Run Installation::Spawn(std::vector<std::string> command) {
  std::vector<char*> argv;
  for (std::string& argument : command) argv.push_back(argument.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);

  const auto begin = std::chrono::steady_clock::now();
  pid_t child = 0;
  if (posix_spawn(&child, command.front().c_str(), &actions, nullptr, argv.data(), environ) != 0) {
    throw std::runtime_error("cannot start " + command.front());
  }
  posix_spawn_file_actions_destroy(&actions);
  Run run;
  int status = 0;
  // The system's own account of a child's peak counts this process's pages, too, so the child's mark is read
  // as it runs; seldom, for that takes time from it.
  std::jthread watch([&run, child](const std::stop_token& stop) {
    for (; !stop.stop_requested(); std::this_thread::sleep_for(kPollInterval))
      run.peakMegabytes = std::max(run.peakMegabytes, HighWaterMark(child));
  });
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  watch.request_stop();
  watch.join();
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

const Installation& FilledPractice(std::int64_t rows) {
  static std::map<std::int64_t, std::unique_ptr<Installation>> practices;
  auto& practice = practices[rows];
  if (practice) return *practice;
  practice = std::make_unique<Installation>("filled-" + std::to_string(rows));
  if (rows > 0) CopyInto(RecordFile(rows, 7, 2010), practice->ExchangeFile());
  if (rows > 0 && practice->Ctl({"update"}).status != 0) throw std::runtime_error("varnlogctl update failed");
  return *practice;
}

void CopyInto(const fs::path& source, const fs::path& target) {
  fs::copy_file(source, target, fs::copy_options::overwrite_existing);
  // On the disk before anything is timed: otherwise the first flush of the measured program writes the copy.
  const int file = open(target.c_str(), O_RDWR);
  fsync(file);
  close(file);
}

}  // namespace varnlog::bench
