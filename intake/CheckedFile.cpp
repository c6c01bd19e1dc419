#include "intake/CheckedFile.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>
#include <vector>

#include "platform/Sha256.h"

namespace varnlog::intake {
namespace {

constexpr std::size_t kPortion = std::size_t{1} << 20U;
constexpr std::size_t kNumberBytes = 8;

/// Hands a piece on portion by portion; `use` returns false to stop. False when it could not be read whole.
template <typename Use>
bool ReadPortions(const FilePiece& piece, const Use& use) {
  std::vector<char> buffer(std::min<std::uint64_t>(kPortion, piece.length));
  for (std::uint64_t done = 0; done < piece.length;) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(kPortion, piece.length - done));
    std::error_code error;
    const std::size_t got = piece.file->ReadAt(piece.offset + done, std::span(buffer).first(wanted), error);
    if (error || got != wanted || !use(std::string_view(buffer.data(), got), done)) return false;
    done += got;
  }
  return true;
}

std::error_code IoError() {
  return std::make_error_code(std::errc::io_error);
}

}  // namespace

void Checksum::Mix(std::uint64_t word) {
  constexpr std::uint64_t kOddFactor = 0x9E3779B97F4A7C15U;
  constexpr int kTurn = 29;
  state_ = std::rotl(state_ ^ word, kTurn) * kOddFactor;
}

void Checksum::Add(std::string_view bytes) {
  while (!bytes.empty() && (length_ % kNumberBytes != 0 || bytes.size() < kNumberBytes)) {
    const std::uint64_t place = length_ % kNumberBytes;
    pending_ |= static_cast<std::uint64_t>(static_cast<unsigned char>(bytes.front())) << (8 * place);
    bytes.remove_prefix(1);
    ++length_;
    if (length_ % kNumberBytes == 0) Mix(std::exchange(pending_, 0));
  }
  for (; bytes.size() >= kNumberBytes; bytes.remove_prefix(kNumberBytes)) {
    Mix(NumberAt(bytes, 0));
    length_ += kNumberBytes;
  }
  if (!bytes.empty()) Add(bytes);
}

std::uint64_t Checksum::Value() const {
  Checksum finished = *this;
  finished.Mix(pending_);
  finished.Mix(length_);
  return finished.state_ ^ (finished.state_ >> 32U);
}

std::optional<std::uint64_t> SumOf(const FilePiece& piece) {
  Checksum sum;
  const auto add = [&sum](std::string_view bytes, std::uint64_t) {
    sum.Add(bytes);
    return true;
  };
  if (!ReadPortions(piece, add)) return std::nullopt;
  return sum.Value();
}

bool AddToDigest(const FilePiece& piece, platform::Sha256& digest) {
  return ReadPortions(piece, [&digest](std::string_view bytes, std::uint64_t) {
    digest.Add(bytes);
    return true;
  });
}

std::optional<std::string> DigestOf(const FilePiece& piece) {
  platform::Sha256 digest;
  if (!AddToDigest(piece, digest)) return std::nullopt;
  return digest.Hex();
}

std::optional<bool> SameBytes(const FilePiece& a, const FilePiece& b) {
  if (a.length != b.length) return false;
  std::vector<char> other(std::min<std::uint64_t>(kPortion, b.length));
  std::error_code error;
  bool same = true;
  const auto compare = [&](std::string_view bytes, std::uint64_t done) {
    const std::size_t got = b.file->ReadAt(b.offset + done, std::span(other).first(bytes.size()), error);
    same = !error && bytes == std::string_view(other.data(), got);
    return same;
  };
  const bool whole = ReadPortions(a, compare);
  if (error || (!whole && same)) return std::nullopt;
  return same;
}

std::optional<bool> IsMixOf(const FilePiece& piece, const FilePiece& a, const FilePiece& b) {
  if (a.length != piece.length) return false;
  bool isMix = true;
  bool isRead = true;
  const auto part = [&isRead](const FilePiece& of, std::uint64_t done, std::size_t size) {
    std::string bytes(std::min<std::uint64_t>(size, of.length - std::min(of.length, done)), '\0');
    std::error_code error;
    bytes.resize(of.file->ReadAt(of.offset + done, bytes, error));
    isRead = isRead && !error;
    return bytes;
  };
  const auto compare = [&](std::string_view bytes, std::uint64_t done) {
    const std::string inA = part(a, done, bytes.size());
    const std::string inB = part(b, done, bytes.size());
    for (std::size_t i = 0; i < bytes.size() && isMix; ++i)
      isMix = (i < inA.size() && inA[i] == bytes[i]) || (i < inB.size() && inB[i] == bytes[i]);
    return isMix && isRead;
  };
  const bool whole = ReadPortions(piece, compare);
  if (!isRead || (!whole && isMix)) return std::nullopt;
  return isMix;
}

std::error_code CopyBytes(const FilePiece& from, platform::File& to, std::uint64_t offset) {
  std::error_code error;
  const bool whole = ReadPortions(from, [&](std::string_view bytes, std::uint64_t done) {
    to.WriteAt(offset + done, bytes, error);
    return !error;
  });
  return error || whole ? error : IoError();
}

std::error_code CheckedFileWriter::Write(std::string_view head, std::span<const FilePiece> pieces) {
  if (error_) return error_;
  std::error_code error;
  platform::File& file = file_.file();
  std::uint64_t end = 0;
  Checksum sum;
  const auto put = [&](std::string_view bytes, std::uint64_t) {
    file.WriteAt(end, bytes, error);
    sum.Add(bytes);
    end += bytes.size();
    return !error;
  };
  bool whole = put(head, 0);
  for (const FilePiece& piece : pieces) whole = whole && ReadPortions(piece, put);
  std::string tail;
  AppendNumber(tail, sum.Value());
  whole = whole && put(tail, 0);
  if (whole) file.Flush(error);
  return error || whole ? error : IoError();
}

std::error_code CheckedFileWriter::Publish() {
  return file_.TakePlace(platform::IfTaken::kReplace);
}

CheckedFile OpenChecked(const std::filesystem::path& path) {
  CheckedFile checked;
  if (!platform::MayExist(path)) return checked;
  std::error_code error;
  checked.state = CheckedFile::State::kUnreadable;
  checked.file =
      platform::File::Open(path, platform::File::Mode::kRead, error, platform::File::Links::kRefuse);
  if (error) return checked;
  const std::uint64_t size = checked.file.Size(error);
  if (error) return checked;
  checked.length = size - std::min<std::uint64_t>(size, kNumberBytes);
  std::string tail(kNumberBytes, '\0');
  const std::size_t got = checked.file.ReadAt(checked.length, tail, error);
  const auto sum = error ? std::nullopt : SumOf({&checked.file, 0, checked.length});
  if (!sum) return checked;
  const bool holds = got == kNumberBytes && *sum == NumberAt(tail, 0);
  checked.state = holds ? CheckedFile::State::kSound : CheckedFile::State::kDamaged;
  return checked;
}

void AppendNumber(std::string& head, std::uint64_t number) {
  for (std::size_t i = 0; i < kNumberBytes; ++i) head.push_back(static_cast<char>(number >> (8 * i)));
}

std::uint64_t NumberAt(std::string_view bytes, std::size_t offset) {
  std::uint64_t number = 0;
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(&number, bytes.data() + offset, kNumberBytes);
    return number;
  }
  for (std::size_t i = 0; i < kNumberBytes; ++i) {
    number |= static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[offset + i])) << (8 * i);
  }
  return number;
}

std::optional<std::filesystem::path> KeepAsDamaged(const std::filesystem::path& path) {
  std::error_code error;
  return platform::KeepAside(path, ".damaged", platform::Keep::kMove, error);
}

}  // namespace varnlog::intake
