#pragma once

#include <chrono>
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

/// Whether others than its owner, this user and the system's administrator may change the file, or exchange
/// the files in the folder. True as well when that cannot be found out. Windows lets everybody who has an
/// account there change folders that nobody has protected; there others are those who need no account.
[[nodiscard]] bool MayBeChangedByOthers(const std::filesystem::path& path);

/// The whole file. Fails with std::errc::file_too_large beyond `limit` bytes.
[[nodiscard]] std::optional<std::string> ReadWholeFile(const std::filesystem::path& path,
                                                       std::error_code& error,
                                                       std::uint64_t limit = 64U << 20U);

/// Another name for the same file (hard-link identity): device and file number.
[[nodiscard]] bool SameFile(const std::filesystem::path& a, const std::filesystem::path& b);

/// False only when there is surely nothing of that name: what cannot be asked for counts as there.
[[nodiscard]] bool MayExist(const std::filesystem::path& path);

/// Whether the name is that of a link to another one, which need not be there.
[[nodiscard]] bool IsLink(const std::filesystem::path& path);

/// Tells one file from another, whatever its names: equal only for the same file, as long as it exists.
struct FileIdentity {
  std::uint64_t volume = 0;  // 0 where the system does not tell, as for some files of servers
  std::uint64_t number = 0;
  bool operator==(const FileIdentity& other) const {
    return number == other.number && (volume == other.volume || volume == 0 || other.volume == 0);
  }
};
/// Of the file that stands under a name; nothing when there is none or it cannot be asked.
[[nodiscard]] std::optional<FileIdentity> IdentityOf(const std::filesystem::path& path);

/// An open file, closed by its destructor. All offsets are absolute; nothing here moves a shared position.
class File {
 public:
  enum class Mode {
    kRead,       // must exist
    kReadWrite,  // must exist
    kCreateNew,  // must not exist, not even as a link; for this user alone until GiveAccessOf(), or for those
                 // to whom the folder gives its files where folders do that (Windows)
  };

  File() = default;
  ~File();
  File(File&& other) noexcept;
  File& operator=(File&& other) noexcept;

  enum class Links { kFollow, kRefuse };

  /// Others may read, write, append to, rename and delete the file while it is open. A link that is refused
  /// fails with std::errc::too_many_symbolic_link_levels.
  [[nodiscard]] static File Open(const std::filesystem::path& path, Mode mode, std::error_code& error,
                                 Links links = Links::kFollow);

  [[nodiscard]] bool IsOpen() const { return handle_ != kNone; }
  void Close();

  [[nodiscard]] std::uint64_t Size(std::error_code& error) const;
  /// Nothing when it cannot be asked.
  [[nodiscard]] std::optional<FileIdentity> Identity() const;
  /// Fills `buffer` from `offset` on; fewer bytes only at the end of the file.
  [[nodiscard]] std::size_t ReadAt(std::uint64_t offset, std::span<char> buffer,
                                   std::error_code& error) const;
  /// Writes all of `bytes` or reports why not.
  void WriteAt(std::uint64_t offset, std::string_view bytes, std::error_code& error);
  void Truncate(std::uint64_t size, std::error_code& error);
  /// Returns when the content is on the disk.
  void Flush(std::error_code& error);

  /// Whether the file is this user's, has no other name and has not changed for so long. Not when that cannot
  /// be asked.
  [[nodiscard]] bool IsOwnAndUntouchedFor(std::chrono::seconds time) const;

  /// Gives the file owner, group and permissions of another one, as far as the system lets this user, and
  /// never to more people; its owner may always read and write. Of a folder: who may make files there may use
  /// this one, nobody else. Without such a model nothing changes.
  void GiveAccessOf(const std::filesystem::path& model);

  /// Locks a byte range exclusively for this open file without waiting; false when another program, or
  /// another File of this one, holds a part of it. The lock goes with UnlockRange() or with the file.
  [[nodiscard]] bool TryLockRange(std::uint64_t offset, std::uint64_t length, std::error_code& error);
  void UnlockRange(std::uint64_t offset, std::uint64_t length);

  enum class Solitude {
    kAlone,        // nobody else has the file open, and new openers wait, or are refused, until EndSolitude()
    kShared,       // somebody else has it open
    kUnsupported,  // this file system cannot tell
  };
  /// Tries to hold the file alone: a write lease on Linux, an exclusive open on Windows. Must be opened
  /// kReadWrite. Locks of this File may be lost, and with them the file itself if its name goes to another
  /// one.
  [[nodiscard]] Solitude TrySolitude();
  void EndSolitude();

 private:
  using Handle = std::intptr_t;
  static constexpr Handle kNone = -1;
  Handle handle_ = kNone;
};

}  // namespace varnlog::platform
