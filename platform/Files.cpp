#include "platform/Files.h"

#include <algorithm>

namespace varnlog::platform {

std::optional<std::uint64_t> FileSize(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  if (error) return std::nullopt;
  return size;
}

bool SameFile(const std::filesystem::path& a, const std::filesystem::path& b) {
  std::error_code error;
  return std::filesystem::equivalent(a, b, error) && !error;
}

bool MayExist(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::symlink_status(path, error).type() != std::filesystem::file_type::not_found;
}

std::optional<std::string> ReadWholeFile(const std::filesystem::path& path, std::error_code& error,
                                         std::uint64_t limit) {
  constexpr std::uint64_t kLeastRoom = 4096;
  const File file = File::Open(path, File::Mode::kRead, error);
  if (error) return std::nullopt;
  std::uint64_t room = file.Size(error) + kLeastRoom;
  if (!error && room - kLeastRoom > limit) error = std::make_error_code(std::errc::file_too_large);
  std::string content;
  std::size_t used = 0;
  // The file may grow while it is read, and some files do not tell their size: read until nothing comes.
  while (!error) {
    content.resize(used + room);
    used += file.ReadAt(used, std::span(content).subspan(used), error);
    if (!error && used > limit) error = std::make_error_code(std::errc::file_too_large);
    if (used < content.size()) break;
    room = std::max<std::uint64_t>(used, kLeastRoom);
  }
  if (error) return std::nullopt;
  content.resize(used);
  return content;
}

}  // namespace varnlog::platform
