#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace varnlog::faults {

/// How a program ended.
struct Outcome {
  int status = -1;
  int signal = 0;  // what ended it, if it did not end by itself
  std::string out;
  std::string err;
};

/// A run of varnlogctl, or of a workstation that corrects or adopts an old log, in a process of its own.
struct Launch {
  std::string arguments;          // as in a shell, without any quoting
  std::filesystem::path program;  // the program folder
  std::filesystem::path folder;   // the current folder
  std::filesystem::path output;   // two files of this name catch what it writes
  std::map<std::string, std::string> environment{};
  std::optional<std::chrono::milliseconds> killedAfter{};
};

[[nodiscard]] Outcome Run(const Launch& launch);

/// What no run may do, whatever goes wrong: crash, hang, or fail without a word.
[[nodiscard]] std::string WrongEnding(const Outcome& outcome);

}  // namespace varnlog::faults
