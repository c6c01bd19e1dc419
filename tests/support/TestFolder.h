#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Files.h"

namespace varnlog::test {

/// "" when there is no such file.
[[nodiscard]] inline std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Throws when that is not possible.
inline void WriteFile(const std::filesystem::path& path, std::string_view bytes) {
  if (!(std::ofstream(path, std::ios::binary) << bytes << std::flush))
    throw std::runtime_error("cannot write " + path.string());
}

inline void AppendFile(const std::filesystem::path& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary | std::ios::app) << bytes;
}

/// Copies a file, whatever stands there; not every std::filesystem can.
inline void CopyOver(const std::filesystem::path& source, const std::filesystem::path& target) {
  std::filesystem::remove(target);
  std::filesystem::copy_file(source, target);
}

/// A folder of its own for each test, with a name that careless code stumbles over.
class TestFolder {
 public:
  TestFolder() {
    std::random_device random;
    path_ = std::filesystem::temp_directory_path() /
            platform::ToPath("Röntgen Praxis " + std::to_string(random()) + std::to_string(random()));
    std::filesystem::create_directories(path_);
  }
  ~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& Path() const { return path_; }
  [[nodiscard]] std::filesystem::path operator/(const std::string& name) const {
    return path_ / platform::ToPath(name);
  }

  /// A file of this content, and its path.
  std::filesystem::path Holding(const std::string& name, std::string_view content) const {
    WriteFile(*this / name, content);
    return *this / name;
  }
  /// What lies there, sorted.
  [[nodiscard]] std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      names.push_back(platform::FromPath(entry.path().filename()));
    }
    std::ranges::sort(names);
    return names;
  }
  /// How many files there have a name that ends like this.
  [[nodiscard]] int Count(const std::string& ending) const {
    const auto names = Names();
    return static_cast<int>(
        std::ranges::count_if(names, [&](const std::string& name) { return name.ends_with(ending); }));
  }

 private:
  std::filesystem::path path_;
};

}  // namespace varnlog::test
