#include "backup/Schedule.h"

#include <algorithm>
#include <filesystem>

#include "platform/Files.h"

namespace varnlog::backup {

namespace {

constexpr const char* kSection = "Backup";

}  // namespace

Settings LoadSettings(const core::SettingsStore& ini, const std::string& iniFile) {
  Settings settings;
  settings.folder = ini.ReadString(kSection, "Folder", iniFile);
  // 0 is what a missing value reads as, and no copies at all is not what anybody means.
  if (const int count = ini.ReadInteger(kSection, "Keep", iniFile); count > 0) settings.keep.count = count;
  if (const int days = ini.ReadInteger(kSection, "Days", iniFile); days > 0) settings.keep.days = days;
  return settings;
}

void SaveSettings(const Settings& settings, core::SettingsStore& ini, const std::string& iniFile) {
  ini.WriteString(kSection, "Folder", settings.folder, iniFile);
  ini.WriteString(kSection, "Keep", std::to_string(settings.keep.count), iniFile);
  ini.WriteString(kSection, "Days", std::to_string(settings.keep.days), iniFile);
}

bool IsDue(const Settings& settings, const std::string& log, platform::DateTime now) {
  if (settings.folder.empty()) return false;
  const auto backups = ListBackups(platform::ToPath(settings.folder), platform::ToPath(log));
  return backups.empty() || backups.front().taken.DatePart() < now.DatePart();
}

std::vector<Backup> Superfluous(const std::vector<Backup>& backups, const Keep& keep,
                                platform::DateTime now) {
  constexpr std::int64_t kSecondsADay = 24 * 60 * 60;
  const std::int64_t oldest = now.SecondsSinceEpoch() - keep.days * kSecondsADay;
  const auto staying = static_cast<std::size_t>(std::max(1, keep.count));
  std::vector<Backup> superfluous;
  for (std::size_t i = staying; i < backups.size(); ++i)
    if (backups[i].taken.SecondsSinceEpoch() < oldest) superfluous.push_back(backups[i]);
  return superfluous;
}

}  // namespace varnlog::backup
