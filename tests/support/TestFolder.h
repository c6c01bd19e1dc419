#pragma once

#include <filesystem>
#include <random>
#include <string>

namespace varnlog::test {

/// A folder of its own for each test, with a name that careless code stumbles over.
class TestFolder {
 public:
  TestFolder() {
    std::random_device random;
    path_ = std::filesystem::temp_directory_path() /
            ("Röntgen Praxis " + std::to_string(random()) + std::to_string(random()));
    std::filesystem::create_directories(path_);
  }
  ~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& Path() const { return path_; }
  [[nodiscard]] std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

  /// How many files there have a name that ends like this.
  [[nodiscard]] int Count(const std::string& ending) const {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      if (entry.path().string().ends_with(ending)) ++count;
    }
    return count;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace varnlog::test
