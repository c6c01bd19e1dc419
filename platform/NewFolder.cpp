#include "platform/NewFolder.h"

#include <random>
#include <string>

#include "platform/SafeFile.h"

namespace varnlog::platform {

namespace fs = std::filesystem;

NewFolder::NewFolder(const fs::path& target, std::error_code& error) : target_(target) {
  std::random_device random;
  path_ = target;
  path_ += ".new-" + std::to_string(random()) + std::to_string(random());
  if (!fs::create_directory(path_, error) && !error) error = std::make_error_code(std::errc::file_exists);
  if (error) path_.clear();
}

std::error_code NewFolder::TakePlace() {
  std::error_code error;
  if (fs::exists(fs::symlink_status(target_, error))) return std::make_error_code(std::errc::file_exists);
  if (error = FlushFolder(path_); error) return error;
  fs::rename(path_, target_, error);
  if (error) return error;
  path_ = target_;
  isDone_ = true;
  return FlushFolder(target_.has_parent_path() ? target_.parent_path() : fs::path("."));
}

void NewFolder::GiveUp() {
  if (path_.empty()) return;
  std::error_code ignored;
  fs::remove_all(path_, ignored);
  path_.clear();
}

NewFolder::~NewFolder() {
  if (!isDone_) GiveUp();
}

}  // namespace varnlog::platform
