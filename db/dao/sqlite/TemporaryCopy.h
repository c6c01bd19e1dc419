#pragma once

#include <optional>
#include <string>

#include "platform/SafeFile.h"

namespace varnlog::dao {

/// The temporary file of a compaction in place, a name that logs can share: made exclusively, held while in
/// use and known by a mark behind its last page, so that one that a crash has left is told from anybody
/// else's file.
class TemporaryCopy {
 public:
  /// Begins one that is to stand at `path` beside the file `source`, for the same people as that. Removes a
  /// left-over. Throws kFileExists when another file has that name, kFileInUse when another program is
  /// working with it.
  TemporaryCopy(const std::string& path, const std::string& source);
  ~TemporaryCopy();
  TemporaryCopy(const TemporaryCopy&) = delete;
  TemporaryCopy& operator=(const TemporaryCopy&) = delete;

  /// Where the content is to be written, into a file that is there and empty.
  [[nodiscard]] std::string WritePath() const { return platform::FromPath(file_.path()); }
  /// Puts the complete content on the disk and gives it its name. Throws as the constructor does.
  void TakeName();
  /// True when the name still stands for what was written.
  [[nodiscard]] bool IsOwn() const;

 private:
  std::filesystem::path path_;
  std::error_code error_;
  platform::NewFile file_;
  std::optional<platform::FileIdentity> identity_;  // since it has its name
};

}  // namespace varnlog::dao
