#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace varnlog::fuzz {

/// The bytes to try as a file; gone with the object, together with what was made beside it.
class ScratchFile {
 public:
  ScratchFile(const std::string& name, const std::uint8_t* data, std::size_t size)
      : folder_(std::filesystem::temp_directory_path() / ("varnlog-fuzz-" + std::to_string(getpid()))) {
    std::filesystem::create_directories(folder_);
    path_ = folder_ / name;
    std::ofstream(path_, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  }
  ~ScratchFile() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path folder_;
  std::filesystem::path path_;
};

}  // namespace varnlog::fuzz
