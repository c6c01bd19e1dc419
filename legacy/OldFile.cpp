#include "legacy/OldFile.h"

#include <array>

#include "db/dao/OpenFiles.h"
#include "legacy/JetHeader.h"
#include "platform/Files.h"

namespace varnlog::legacy {

std::optional<std::string> ReadOldFile(const std::filesystem::path& path, std::error_code& error) {
  constexpr std::uint64_t kLongest = (2ULL << 30U) + 4096;
  return platform::ReadWholeFile(path, error, kLongest);
}

bool IsJetFile(const std::filesystem::path& path) {
  // What the engine has open is a log already, and must not be opened in another way.
  if (dao::IsOpenHere(platform::FromPath(path))) return false;
  std::error_code error;
  const platform::File file = platform::File::Open(path, platform::File::Mode::kRead, error);
  if (error) return false;
  std::array<char, kSignatureLength> start{};
  const std::size_t length = file.ReadAt(0, start, error);
  return !error && IsJet(std::as_bytes(std::span(start).first(length)));
}

}  // namespace varnlog::legacy
