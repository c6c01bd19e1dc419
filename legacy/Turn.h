#pragma once

#include <filesystem>

#include "platform/Files.h"

namespace varnlog::legacy {

/// The right to convert a log, which one workstation has at a time: a lock on a file of its own beside the
/// log, since what is open cannot give its name to another file everywhere. It goes with the process; a crash
/// leaves an empty file, which holds nobody up.
class Turn {
 public:
  explicit Turn(const std::filesystem::path& log);
  ~Turn();
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  /// True as well where no file can be made: nothing can be converted there.
  [[nodiscard]] bool IsMine() const { return isMine_; }

 private:
  [[nodiscard]] std::error_code Open(const std::filesystem::path& log);
  /// Whoever had it before may have removed the file since it was opened.
  [[nodiscard]] bool HasItsName() const;

  std::filesystem::path path_;
  platform::File file_;
  bool isMine_ = false;
};

}  // namespace varnlog::legacy
