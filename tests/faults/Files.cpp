#include "tests/faults/Files.h"

#include <fstream>
#include <stdexcept>

namespace varnlog::faults {

namespace fs = std::filesystem;

void WriteFile(const fs::path& file, std::string_view bytes) {
  std::ofstream stream(file, std::ios::binary);
  if (!stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush())
    throw std::runtime_error("cannot write " + file.string());
}

Files ReadFolder(const fs::path& folder) {
  Files files;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.is_regular_file()) files[entry.path().filename().string()] = ReadFile(entry.path());
  }
  return files;
}

void WriteFolder(const fs::path& folder, const Files& files) {
  fs::remove_all(folder);
  fs::create_directories(folder);
  for (const auto& [name, bytes] : files) WriteFile(folder / name, bytes);
}

}  // namespace varnlog::faults
