#include <array>
#include <charconv>

#include "core/Installation.h"
#include "db/modCommon.h"
#include "platform/Files.h"
#include "platform/ShortDate.h"
#include "start/StartUp.h"

namespace varnlog::start {

namespace {

constexpr std::string_view kUser = "User";

struct Switch {
  std::string_view key;
  bool core::Globals::*member;
  bool atFirst = true;  // without an INI file
};

constexpr std::array<Switch, 6> kSwitches = {{
    {"OptBigIcons", &core::Globals::OptBigIcons},
    {"OptTbrVisible", &core::Globals::OptTbrVisible},
    {"OptSbrVisible", &core::Globals::OptSbrVisible},
    {"OptHistoryVisible", &core::Globals::OptHistoryVisible, false},
    {"UpdateOnActivation", &core::Globals::UpdateOnActivation},
    {"TakeInAtOnce", &core::Globals::TakeInAtOnce, false},
}};

/// Not set when the key is missing or holds no date. The dates of older files have dots.
platform::DateTime ReadDate(const core::SettingsStore& ini, const std::string& section, std::string_view key,
                            const std::string& file) {
  const std::string text = ini.ReadString(section, key, file);
  const platform::DateTime compact = db::CompactTextToDate(text);
  if (compact.IsSet()) return compact;
  return platform::ShortDate().Parse(text).value_or(platform::DateTime());
}

std::string DateText(platform::DateTime date) {
  return date.IsSet() ? db::DateToCompactText(date) : std::string();
}

}  // namespace

std::string ConfiguredDataFile(const core::Globals& globals, const core::SettingsStore& ini) {
  std::string file = ini.ReadString(kUser, "DataFile", globals.IniFileGl);
  if (file.empty()) return {};
  const std::filesystem::path path = platform::ToPath(file);
  if (path.is_relative()) file = platform::FromPath(platform::ToPath(globals.ProgramFolderGl) / path);
  return file;
}

std::string DefaultDataFile(const core::Globals& globals) {
  return globals.DataPathGl + std::string(core::kDefaultLog);
}

void LoadSettings(core::Globals& globals, const core::SettingsStore& ini) {
  const bool hasFile = db::FileExists(globals.IniFileGl);
  for (const Switch& option : kSwitches) {
    globals.*option.member =
        hasFile ? ini.ReadString(kUser, option.key, globals.IniFileGl) == "1" : option.atFirst;
  }
  globals.strDataFileGl = ConfiguredDataFile(globals, ini);
  globals.StartFileGl = globals.strDataFileGl;
  globals.ConfiguredGl = globals.strDataFileGl;
  if (db::FileExists(globals.strDataFileGl)) {
    LoadSelection(globals, ini, globals.strDataFileGl);
  } else {
    globals.strDataFileGl = DefaultDataFile(globals);
    globals.SortSelectionGl = core::SelectionKind::kAll;
  }
}

void LoadSelection(core::Globals& globals, const core::SettingsStore& ini, const std::string& dataFile) {
  const std::string& file = globals.IniFileGl;
  const std::int16_t kind = ini.ReadInteger(dataFile, "SortSelectionGl", file);
  const bool isKind = kind <= static_cast<std::int16_t>(core::SelectionKind::kPeriodXV);
  globals.SortSelectionGl = isKind ? static_cast<core::SelectionKind>(kind) : core::SelectionKind::kAll;
  globals.dBegGl = ReadDate(ini, dataFile, "DateBeg", file);
  globals.dEndGl = ReadDate(ini, dataFile, "DateEnd", file);
  globals.strPatFirstnameGl = ini.ReadString(dataFile, "FirstName", file);
  globals.strPatNameGl = ini.ReadString(dataFile, "Name", file);
  globals.dPatBirthdayGl = ReadDate(ini, dataFile, "Birth", file);
}

void SaveSelection(const core::Globals& globals, core::SettingsStore& ini, const std::string& dataFile) {
  const std::string& file = globals.IniFileGl;
  ini.WriteString(dataFile, "SortSelectionGl", std::to_string(static_cast<int>(globals.SortSelectionGl)),
                  file);
  ini.WriteString(dataFile, "DateBeg", DateText(globals.dBegGl), file);
  ini.WriteString(dataFile, "DateEnd", DateText(globals.dEndGl), file);
  ini.WriteString(dataFile, "FirstName", globals.strPatFirstnameGl, file);
  ini.WriteString(dataFile, "Name", globals.strPatNameGl, file);
  ini.WriteString(dataFile, "Birth", DateText(globals.dPatBirthdayGl), file);
}

void SaveSettings(const core::Globals& globals, core::SettingsStore& ini) {
  for (const Switch& option : kSwitches) {
    ini.WriteString(kUser, option.key, globals.*option.member ? "1" : "0", globals.IniFileGl);
  }
  // A log that could not be reached stays configured, whichever stood in for it.
  ini.WriteString(kUser, "DataFile",
                  globals.ConfiguredGl.empty() ? globals.strDataFileGl : globals.ConfiguredGl,
                  globals.IniFileGl);
  if (!globals.strDataFileGl.empty()) SaveSelection(globals, ini, globals.strDataFileGl);
}

void BeginSettings(const core::Globals& globals, core::SettingsStore& ini) {
  if (db::FileExists(globals.IniFileGl)) return;
  for (const Switch& option : kSwitches)
    ini.WriteString(kUser, option.key, option.atFirst ? "1" : "0", globals.IniFileGl);
}

void ReadHostSettings(core::Globals& globals, const core::SettingsStore& ini) {
  globals.SiteGl = ini.ReadString("INSTALL", "Site", core::InSuiteFolder(globals, core::kSuiteSettings));
  const std::string acquisition = core::InSuiteFolder(globals, core::kAcquisitionSettings);
  globals.kVGl = ini.ReadInteger("XRaysIO", "kV", acquisition);
  globals.mAGl = ini.ReadInteger("XRaysIO", "mA", acquisition);
}

}  // namespace varnlog::start
