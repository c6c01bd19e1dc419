#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace varnlog::legacy {

/// The names that a conversion in place uses, all in the folder of the old file.
struct ConversionPaths {
  std::filesystem::path log;      // the old file before, the new log after
  std::filesystem::path kept;     // NAME.jet.mdb: the old file for good
  std::filesystem::path growing;  // the new log until it is complete; an interrupted conversion leaves it

  [[nodiscard]] static ConversionPaths For(const std::filesystem::path& log);
};

/// Removes what an interrupted conversion left of its new log, the storage's journal first: it must never
/// meet another file of that name.
[[nodiscard]] std::error_code RemoveGrowing(const std::filesystem::path& growing);

/// Whether the name for the old file is free, or already the old file's (its content has the digest
/// `origin`): an earlier conversion came as far as giving it.
[[nodiscard]] bool IsKeptNameUsable(const ConversionPaths& paths, const std::string& origin);

/// False for a log that is write-protected, or lies in a folder or on a medium that is.
[[nodiscard]] bool CanBeReplaced(const std::filesystem::path& log);

/// Gives the old file its second name and the complete new log the old one's name. At every instant, also
/// through a crash, the old file is there under one of its names, and `log` is either it or the new log.
[[nodiscard]] std::error_code ChangePlaces(const ConversionPaths& paths);

/// The old program's lock file beside a log; nothing when there is none.
[[nodiscard]] std::optional<std::filesystem::path> LockFileOf(const std::filesystem::path& log);

/// False only when it is certain that no program has the file open: a crash leaves lock files, too.
[[nodiscard]] bool MayBeOpen(const std::filesystem::path& lockFile);

}  // namespace varnlog::legacy
