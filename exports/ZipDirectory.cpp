#include "exports/ZipDirectory.h"

#include <algorithm>
#include <system_error>

#include "platform/Files.h"

namespace varnlog::exports {

namespace {

// The archive ends with a record that says where its list stands:
//   0 "PK\5\6"  12 bytes of the list  16 where it begins  22 the end (no comment)
constexpr std::size_t kEndSize = 22;
// An entry of the list:
//   0 "PK\1\2"  24 bytes unpacked  28 length of the name  30 of the extra field  32 of the comment  46 name
constexpr std::size_t kEntrySize = 46;

std::uint64_t Number(std::string_view bytes, std::size_t at, std::size_t size) {
  std::uint64_t number = 0;
  for (std::size_t i = size; i > 0; --i) {
    number = number << 8U | static_cast<unsigned char>(bytes[at + i - 1]);
  }
  return number;
}

std::string Read(const platform::File& file, std::uint64_t from, std::size_t size) {
  std::string bytes(size, '\0');
  std::error_code error;
  bytes.resize(file.ReadAt(from, bytes, error));
  return error ? std::string() : bytes;
}

}  // namespace

std::map<std::string, std::uint64_t> ListArchive(const std::filesystem::path& file) {
  std::error_code error;
  const auto archive = platform::File::Open(file, platform::File::Mode::kRead, error);
  const std::uint64_t size = error ? 0 : archive.Size(error);
  if (error || size < kEndSize) return {};
  const std::string end = Read(archive, size - kEndSize, kEndSize);
  if (!end.starts_with("PK\5\6")) return {};
  const std::uint64_t listSize = std::min(Number(end, 12, 4), size);
  const std::string list = Read(archive, Number(end, 16, 4), static_cast<std::size_t>(listSize));
  std::map<std::string, std::uint64_t> entries;
  for (std::size_t at = 0; at + kEntrySize <= list.size();) {
    const std::size_t name = Number(list, at + 28, 2);
    entries[list.substr(at + kEntrySize, name)] = Number(list, at + 24, 4);
    at += kEntrySize + name + Number(list, at + 30, 2) + Number(list, at + 32, 2);
  }
  return entries;
}

}  // namespace varnlog::exports
