#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>

namespace varnlog::platform {

/// Paths inside the program are UTF-8 text in which '\' and '/' both separate; this turns one into a path of
/// the system. A relative path stays relative.
[[nodiscard]] std::filesystem::path ToPath(std::string_view text);

/// The system's form of a path as UTF-8 text.
[[nodiscard]] std::string FromPath(const std::filesystem::path& path);

/// The folder that holds the running executable.
[[nodiscard]] std::filesystem::path ExecutableFolder();

/// The running executable's name without its ending.
[[nodiscard]] std::string ExecutableName();

/// The size in bytes; nothing when there is no regular file of that name or it cannot be asked.
[[nodiscard]] std::optional<std::uint64_t> FileSize(const std::filesystem::path& path);

/// Whether the program may write to the file, or make files in the folder. One without any write permission
/// counts as protected even for a user whom the system would let through.
[[nodiscard]] bool IsWritable(const std::filesystem::path& path);

/// The whole file. Fails with std::errc::file_too_large beyond `limit` bytes.
[[nodiscard]] std::optional<std::string> ReadWholeFile(const std::filesystem::path& path,
                                                       std::error_code& error,
                                                       std::uint64_t limit = 64U << 20U);

/// Writes `content` to a temporary file in the same folder, flushes it to the disk and renames it over
/// `path`: a reader sees the old file or the new one, never a part. Keeps the old file's permissions.
[[nodiscard]] std::error_code ReplaceFile(const std::filesystem::path& path, std::string_view content);

/// Copies a file by way of a temporary file beside the target, flushed and renamed; never overwrites unless
/// told to. The copy is writable by its owner even when the source is not.
[[nodiscard]] std::error_code CopyWholeFile(const std::filesystem::path& source,
                                            const std::filesystem::path& target, bool overwrite);

/// Gives a file another name on the same file system, for good: the change survives a power cut. Never
/// overwrites unless told to.
[[nodiscard]] std::error_code RenameFile(const std::filesystem::path& source,
                                         const std::filesystem::path& target, bool overwrite);

/// Makes a rename or a deletion in `folder` survive a power cut. Does nothing where the system needs nothing.
void FlushFolder(const std::filesystem::path& folder);

/// Another name for the same file (hard-link identity): device and file number.
[[nodiscard]] bool SameFile(const std::filesystem::path& a, const std::filesystem::path& b);

/// An open file, closed by its destructor. All offsets are absolute; nothing here moves a shared position.
class File {
 public:
  enum class Mode {
    kRead,           // must exist
    kReadWrite,      // must exist
    kCreateNew,      // must not exist
    kCreateOrEmpty,  // made, or cut to nothing
  };

  File() = default;
  ~File();
  File(File&& other) noexcept;
  File& operator=(File&& other) noexcept;

  /// Others may read, write, append to, rename and delete the file while it is open.
  [[nodiscard]] static File Open(const std::filesystem::path& path, Mode mode, std::error_code& error);

  [[nodiscard]] bool IsOpen() const { return handle_ != kNone; }
  void Close();

  [[nodiscard]] std::uint64_t Size(std::error_code& error) const;
  /// Fills `buffer` from `offset` on; fewer bytes only at the end of the file.
  [[nodiscard]] std::size_t ReadAt(std::uint64_t offset, std::span<char> buffer,
                                   std::error_code& error) const;
  /// Writes all of `bytes` or reports why not.
  void WriteAt(std::uint64_t offset, std::string_view bytes, std::error_code& error);
  void Truncate(std::uint64_t size, std::error_code& error);
  /// Returns when the content is on the disk.
  void Flush(std::error_code& error);

  /// Locks a byte range exclusively for this open file without waiting; false when another program, or
  /// another File of this one, holds a part of it. The lock goes with UnlockRange() or with the file.
  [[nodiscard]] bool TryLockRange(std::uint64_t offset, std::uint64_t length, std::error_code& error);
  void UnlockRange(std::uint64_t offset, std::uint64_t length);

  enum class Solitude {
    kAlone,        // nobody else has the file open, and new openers wait until EndSolitude()
    kShared,       // somebody else has it open
    kUnsupported,  // this file system cannot tell
  };
  /// Tries to hold the file alone: a write lease on Linux. Must be opened kReadWrite.
  [[nodiscard]] Solitude TrySolitude();
  void EndSolitude();

 private:
  using Handle = std::intptr_t;
  static constexpr Handle kNone = -1;
  Handle handle_ = kNone;
};

}  // namespace varnlog::platform
