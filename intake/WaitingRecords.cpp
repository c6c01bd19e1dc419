#include "intake/WaitingRecords.h"

#include <limits>

#include "intake/CPAXTOTokens.h"

namespace varnlog::intake {

namespace {

constexpr std::size_t kBeginning = 256;

std::string BeginningOf(const std::filesystem::path& path) {
  std::error_code error;
  const platform::File file = platform::File::Open(path, platform::File::Mode::kRead, error);
  if (error) return {};
  std::string bytes(kBeginning, '\0');
  bytes.resize(file.ReadAt(0, bytes, error));
  return error ? std::string() : bytes;
}

}  // namespace

std::int64_t WaitingRecords::Count(const std::string& exchangeFile, std::uint64_t begin) {
  const auto path = platform::ToPath(exchangeFile);
  const auto size = platform::FileSize(path).value_or(0);
  const auto file = platform::IdentityOf(path);
  const std::string beginning = BeginningOf(path);
  const bool hasGrown =
      file && file == file_ && size >= end_ && end_ > 0 && beginning.starts_with(beginning_);
  if (!hasGrown || begin != begin_) {
    begin_ = begin;
    end_ = begin;
    count_ = 0;
    file_ = file;
  }
  beginning_ = beginning;
  if (size == end_) return count_;
  CPAXTOTokens tokens(oem_);
  if (!tokens.OpenPiece(path, end_)) return count_;
  const std::int64_t end = tokens.ReadMailslot(std::numeric_limits<std::int64_t>::max());
  if (end > 0) {
    end_ = static_cast<std::uint64_t>(end);
    count_ += tokens.Count();
  }
  return count_;
}

}  // namespace varnlog::intake
