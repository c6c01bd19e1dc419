#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "db/CJetEngine.h"
#include "db/dao/DBEngine.h"
#include "platform/DateTime.h"

/// Copies of a log in a folder of their own, each made while others work, checked after writing and told by
/// its name and by a digest beside it.
namespace varnlog::backup {

struct Backup {
  std::filesystem::path path;
  platform::DateTime taken;  // local time
  std::uint64_t bytes = 0;
  friend bool operator==(const Backup&, const Backup&) = default;
};

struct Made {
  Backup backup;
  std::vector<std::string> wrong;  // with the log as with the copy; empty when both are sound
};

/// "Varnlog 2026-11-22 06-12-05.mdb" for a log named Varnlog.mdb.
[[nodiscard]] std::string BackupName(const std::filesystem::path& log, platform::DateTime taken);
/// The file that holds the copy's digest, as sha256sum writes and checks it, and behind a '#' the path of the
/// log.
[[nodiscard]] std::filesystem::path DigestFile(const std::filesystem::path& backup);

/// The copies of this log in the folder, the newest first; those of a log of the same name that stands
/// elsewhere are not among them. Empty when the folder cannot be read.
[[nodiscard]] std::vector<Backup> ListBackups(const std::filesystem::path& folder,
                                              const std::filesystem::path& log);

// In all of the following `engine` has a workspace and no open database.

/// Makes a copy and checks it: everything in the file, its seals, and its digest read back from the disk.
/// Never overwrites, and a failure leaves nothing. A log that is not sound is copied all the same: the result
/// says what is wrong. Throws dao::EngineError: kInvalidPath when there is no such folder,
/// kNotEnoughDiskSpace, kNoPermission, kCancelled.
Made MakeBackup(db::CJetEngine& engine, const std::filesystem::path& log, const std::filesystem::path& folder,
                platform::DateTime now, const dao::MaintenanceProgress& progress = {});

/// Removes the copy and its digest. What cannot be removed stays.
void Remove(const Backup& backup);

/// What is known of a copy or a log before one takes the other's place.
struct Content {
  std::int64_t exposures = 0;
  platform::DateTime newest;  // time of the newest exposure; not set when there is none
};
/// Throws dao::EngineError.
[[nodiscard]] Content ReadContent(db::CJetEngine& engine, const std::filesystem::path& file);

/// What is wrong with a copy: that it is not what was written, and everything else; empty when it is sound.
/// Throws dao::EngineError.
[[nodiscard]] std::vector<std::string> CheckBackup(db::CJetEngine& engine,
                                                   const std::filesystem::path& backup);

/// Puts the content of a sound copy into the log, which stays the same file for everybody, or makes the log
/// if it is gone. What the log held is kept beside it as NAME.replaced; the result is that file's path, empty
/// without one. Throws dao::EngineError, with the log as it was.
std::filesystem::path Restore(db::CJetEngine& engine, const std::filesystem::path& backup,
                              const std::filesystem::path& log,
                              const dao::MaintenanceProgress& progress = {});

}  // namespace varnlog::backup
