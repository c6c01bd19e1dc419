#pragma once

#include <filesystem>
#include <system_error>

namespace varnlog::platform {

/// A folder that is filled under a name nobody can guess, beside where it is to stand, and takes its own name
/// when it is complete. Removed by the destructor, with the files in it, unless it did.
class NewFolder {
 public:
  /// Fails when its parent is not there or may not be written to.
  NewFolder(const std::filesystem::path& target, std::error_code& error);
  ~NewFolder();
  NewFolder(const NewFolder&) = delete;
  NewFolder& operator=(const NewFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  /// Gives the folder its name; fails with std::errc::file_exists when that is taken.
  [[nodiscard]] std::error_code TakePlace();
  /// Removes it, even if it has its name already.
  void GiveUp();

 private:
  std::filesystem::path target_;
  std::filesystem::path path_;
  bool isDone_ = false;
};

}  // namespace varnlog::platform
