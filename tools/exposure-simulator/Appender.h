#pragma once

#include <filesystem>
#include <fstream>
#include <string_view>

namespace varnlog::tools {

/// Appends records to the exchange file as the imaging suite does: each in one write at the file's end.
class Appender {
 public:
  struct Habits {
    bool holdsFile = false;  // keep the file open between records
    bool takesLock = false;  // lock the file's first byte meanwhile
  };

  Appender(std::filesystem::path file, Habits habits) : file_(std::move(file)), habits_(habits) {}

  /// Throws std::system_error.
  void Append(std::string_view bytes);

 private:
  void Write(std::string_view bytes);
  void WriteLocked(std::string_view bytes);

  std::filesystem::path file_;
  Habits habits_;
  std::ofstream stream_;
};

}  // namespace varnlog::tools
