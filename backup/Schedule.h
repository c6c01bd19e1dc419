#pragma once

#include <string>
#include <vector>

#include "backup/Backup.h"
#include "core/SettingsStore.h"

namespace varnlog::backup {

/// Which copies stay: the newest `count`, and of the others those younger than `days`.
struct Keep {
  int count = 14;
  int days = 90;
  friend bool operator==(const Keep&, const Keep&) = default;
};

/// Section "Backup" of the program's INI file: keys "Folder", "Keep", "Days".
struct Settings {
  std::string folder;  // "": no copies are made without being asked for
  Keep keep;
  friend bool operator==(const Settings&, const Settings&) = default;
};
[[nodiscard]] Settings LoadSettings(const core::SettingsStore& ini, const std::string& iniFile);
void SaveSettings(const Settings& settings, core::SettingsStore& ini, const std::string& iniFile);

/// Whether today's copy of the log is still to be made.
[[nodiscard]] bool IsDue(const Settings& settings, const std::string& log, platform::DateTime now);

/// The copies, of those given with the newest first, that do not stay. The newest always stays.
[[nodiscard]] std::vector<Backup> Superfluous(const std::vector<Backup>& backups, const Keep& keep,
                                              platform::DateTime now);

}  // namespace varnlog::backup
