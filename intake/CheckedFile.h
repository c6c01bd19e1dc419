#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/SafeFile.h"
#include "platform/Sha256.h"

namespace varnlog::intake {

/// Some bytes of an open file.
struct FilePiece {
  const platform::File* file = nullptr;
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
};

/// A 64-bit sum over bytes, the same however they are cut into portions. It tells a damaged file from a whole
/// one; it is no protection against people.
class Checksum {
 public:
  void Add(std::string_view bytes);
  [[nodiscard]] std::uint64_t Value() const;

 private:
  void Mix(std::uint64_t word);
  std::uint64_t state_ = 0x243F6A8885A308D3U;
  std::uint64_t length_ = 0;
  std::uint64_t pending_ = 0;  // the last length_ % 8 bytes
};

/// The sum of a piece; nothing when it cannot be read whole.
[[nodiscard]] std::optional<std::uint64_t> SumOf(const FilePiece& piece);

/// The SHA-256 digest of a piece; nothing when it cannot be read whole.
[[nodiscard]] std::optional<std::string> DigestOf(const FilePiece& piece);

/// Adds the bytes of a piece to a digest; false when it cannot be read whole.
[[nodiscard]] bool AddToDigest(const FilePiece& piece, platform::Sha256& digest);

/// Whether `b` holds exactly the bytes of `a`, and has them all; nothing when they cannot be read.
[[nodiscard]] std::optional<bool> SameBytes(const FilePiece& a, const FilePiece& b);

/// Whether each byte of the piece is that of `a`, which is as long, or that of `b` at the same place; nothing
/// when they cannot be read.
[[nodiscard]] std::optional<bool> IsMixOf(const FilePiece& piece, const FilePiece& a, const FilePiece& b);

/// Writes bytes of one file into another in portions.
[[nodiscard]] std::error_code CopyBytes(const FilePiece& from, platform::File& to, std::uint64_t offset);

/// Makes a file of `head`, the pieces and their checksum: written beside `path` under a temporary name and
/// flushed by Write(), put in its place by Publish(), so that the file is there whole or not at all. What was
/// not published is deleted.
class CheckedFileWriter {
 public:
  /// Owner and permissions: those of `model`.
  CheckedFileWriter(const std::filesystem::path& path, const std::filesystem::path& model)
      : file_(path, error_, model) {}

  [[nodiscard]] std::error_code Write(std::string_view head, std::span<const FilePiece> pieces);
  [[nodiscard]] std::error_code Publish();

 private:
  std::error_code error_;
  platform::NewFile file_;
};

/// A file made by CheckedFileWriter, opened for reading.
struct CheckedFile {
  enum class State {
    kNone,
    kUnreadable,  // it is there but the system does not give it out
    kDamaged,     // not the bytes that were written
    kSound,
  };
  State state = State::kNone;
  platform::File file;
  std::uint64_t length = 0;  // without the checksum
};
[[nodiscard]] CheckedFile OpenChecked(const std::filesystem::path& path);

/// Numbers in the head of such a file: eight bytes, little-endian.
void AppendNumber(std::string& head, std::uint64_t number);
[[nodiscard]] std::uint64_t NumberAt(std::string_view bytes, std::size_t offset);

/// Keeps a file whose content is damaged under a name at which nobody looks. Nothing when it stays where it
/// is.
[[nodiscard]] std::optional<std::filesystem::path> KeepAsDamaged(const std::filesystem::path& path);

}  // namespace varnlog::intake
