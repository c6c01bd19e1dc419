#pragma once

#include <filesystem>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <system_error>

#include "platform/Files.h"

/// Making, replacing, keeping and removing files so that a crash, a power cut or a stranger in the same
/// folder costs nothing: a name stands for the whole old content or the whole new one, and nothing is written
/// through a name that somebody else could have put there. Every rename and removal of the program is made
/// here.
///
/// Where a change of names is made but cannot be put on the disk, the functions report that error although
/// the names have changed.
namespace varnlog::platform {

/// What happens when a name is taken already.
enum class IfTaken { kFail, kReplace };

/// A file that is written under a name nobody can guess, in the folder where it is to stand, and takes its
/// own name when it is complete. Removed by the destructor unless it did.
///
/// A link under the target's name is replaced, not followed; whoever wants it followed passes BehindLinks().
class NewFile {
 public:
  /// Makes the file and removes what crashes left of earlier ones for `target`. Its owner and permissions are
  /// those of `model` if there is such a file, else those of the file that `target` names, else it is open to
  /// nobody but those who may make files in the folder. Fails when `target` is a folder, no plain file or
  /// write-protected.
  NewFile(const std::filesystem::path& target, std::error_code& error,
          const std::filesystem::path& model = {});
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  /// Open for reading and writing until the end of this object.
  [[nodiscard]] File& file() { return file_; }
  /// For writers that need a name. They have closed it before TakePlace().
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  /// Flushes the content, gives the file its name and flushes the folder.
  [[nodiscard]] std::error_code TakePlace(IfTaken ifTaken);

 private:
  std::filesystem::path target_;
  std::filesystem::path path_;  // empty when there is nothing to remove
  File file_;
};

/// Holds a file that is being written, as NewFile does until its end; false when another program holds it. A
/// crash gives it back.
[[nodiscard]] bool TryHold(File& file, std::error_code& error);

/// The file that a chain of links ends at, whether it is there or not; the path itself when it is no link.
[[nodiscard]] std::filesystem::path BehindLinks(const std::filesystem::path& path);

/// Replaces the content of a settings file or makes it. Such a file may be a link: it stays one.
[[nodiscard]] std::error_code ReplaceFile(const std::filesystem::path& path, std::string_view content);

/// Copies a file. The copy is writable by its owner even when the source is not; for its owner and
/// permissions and for `model` see NewFile.
[[nodiscard]] std::error_code CopyWholeFile(const std::filesystem::path& source,
                                            const std::filesystem::path& target, IfTaken ifTaken,
                                            const std::filesystem::path& model);

/// Makes a file with this content, whole or not at all; for `model` see NewFile.
[[nodiscard]] std::error_code WriteWholeFile(const std::filesystem::path& target, std::string_view content,
                                             IfTaken ifTaken, const std::filesystem::path& model = {});

/// Gives a file another name on the same file system, for good: the change survives a power cut.
[[nodiscard]] std::error_code RenameFile(const std::filesystem::path& source,
                                         const std::filesystem::path& target, IfTaken ifTaken);

/// Gives a file a second name beside its first one, or a copy of that name where the file system knows no
/// second names. Never overwrites.
[[nodiscard]] std::error_code GiveSecondName(const std::filesystem::path& path,
                                             const std::filesystem::path& second);

/// How KeepAside() keeps a file: under another name, or under a second name.
enum class Keep { kMove, kSecondName };

/// Keeps a file for whoever may need it, under the first free name of PATH + suffix, PATH + suffix + "2", ...
/// Returns that name; nothing when it could not be done.
[[nodiscard]] std::optional<std::filesystem::path> KeepAside(const std::filesystem::path& path,
                                                             std::string_view suffix, Keep how,
                                                             std::error_code& error);

/// Removes a file and before it the files beside it that belong to it, PATH + each of `companions`: they must
/// never meet another file of that name. What is not there is no error. Links themselves are removed; folders
/// never are.
[[nodiscard]] std::error_code RemoveFile(const std::filesystem::path& path,
                                         std::initializer_list<std::string_view> companions = {});

/// Removes what a crash left of new files for `target`; those still being written are recognised and stay.
void SweepUnfinished(const std::filesystem::path& target);

/// Removes what an earlier version of this program may have left under a name that it always used: a plain
/// file of this user that nobody has open and that has not changed for a day. Where the name alone does not
/// tell, `isLeftOver` is asked about the content.
void SweepFormer(
    const std::filesystem::path& path,
    const std::function<bool(const File&)>& isLeftOver = [](const File&) { return true; });

/// Makes renames and removals in `folder` survive a power cut. No error where the system needs nothing or
/// knows no such thing.
[[nodiscard]] std::error_code FlushFolder(const std::filesystem::path& folder);

}  // namespace varnlog::platform
