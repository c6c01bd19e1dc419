#pragma once

#include <string>
#include <string_view>

#include "core/Globals.h"
#include "core/Messages.h"
#include "core/SettingsStore.h"
#include "intake/CodeMappings.h"
#include "platform/Clock.h"
#include "platform/Process.h"
#include "seals/Finding.h"

namespace varnlog::start {

/// The services start-up and the main window work with.
struct Services {
  core::SettingsStore& ini;
  const core::TextLookup& texts;
  core::UserDialog& user;
  const platform::Clock& clock;
  seals::Progress progress = {};  // hears how far the first sealing of a log is

  [[nodiscard]] core::Messages Messages() const { return {user, texts}; }
};

/// Starts the registration of the two report components and does not wait for it; nothing where the operating
/// system has no registration program.
void RegisterReportComponents(platform::Launcher& launcher,
                              bool hasRegistration = platform::HasComponentRegistration());

/// The imaging suite's data folder with its trailing separator, asked of the suite's library "KVFILEDB.DLL"
/// one folder above the program; "" on any failure, and when the library is not to be trusted. `language`
/// chooses the code page of the library's answer.
[[nodiscard]] std::string HostDataPath(std::string_view programFolder, std::string_view language);

/// The suite's library, or its folder, if others than its owner and this user may change it; "" if not.
[[nodiscard]] std::string UntrustedHostLibrary(std::string_view programFolder);

/// Fills DataPathGl and ExchangeFileGl from HostDataPath(); false, with DataPathGl empty, after saying why.
[[nodiscard]] bool FindHostData(core::Globals& globals, const Services& services);

/// Finds out who works here, makes LogEngineGl and opens the workspace "MyWs".
[[nodiscard]] bool OpenLogWorkspace(core::Globals& globals);

/// The program's own INI file; nothing in it can stop the start-up.
void LoadSettings(core::Globals& globals, const core::SettingsStore& ini);
/// The log in the suite's data folder.
[[nodiscard]] std::string DefaultDataFile(const core::Globals& globals);
/// The log that the settings name, as a full path, whether it is there or not; "" when they name none.
[[nodiscard]] std::string ConfiguredDataFile(const core::Globals& globals, const core::SettingsStore& ini);
void SaveSettings(const core::Globals& globals, core::SettingsStore& ini);
/// To be called before anything but these settings is noted in the file. Without the file all view options
/// are on, in one that lacks them all are off.
void BeginSettings(const core::Globals& globals, core::SettingsStore& ini);
/// Each log remembers its own last selection, in the section named by its path.
void LoadSelection(core::Globals& globals, const core::SettingsStore& ini, const std::string& dataFile);
void SaveSelection(const core::Globals& globals, core::SettingsStore& ini, const std::string& dataFile);
/// The practice's name and the default tube voltage and current, from the imaging suite's INI files.
void ReadHostSettings(core::Globals& globals, const core::SettingsStore& ini);

[[nodiscard]] std::string GetConfigValue(const core::Globals& globals, std::string_view key);
/// Changes an existing key; a key without a row is never made (false).
bool SetConfigValue(const core::Globals& globals, std::string_view key, std::string_view value);
[[nodiscard]] bool ReadDBVersion(core::Globals& globals);

/// Copies the empty log from the program folder when strDataFileGl does not exist; false (after
/// MN_ERR_DBINSTALL) when that failed.
bool InstallDataFile(const core::Globals& globals, const Services& services);

/// Whether the log of strDataFileGl is neither the default one nor the one that the settings named at start.
[[nodiscard]] bool IsOtherLog(const core::Globals& globals);

/// How opening a log ended.
enum class Opened {
  kNo,
  kYes,
  kDamaged,  // not open either, but repairing the file may help
};

/// Opens and checks a log as far as no window is needed: open, upgrade, version. On success strDataFileGl is
/// `file`; on failure the reason has been shown and the log is closed.
[[nodiscard]] Opened OpenAndCheckDataFile(core::Globals& globals, const Services& services,
                                          const std::string& file, bool readOnly = false);

/// Falls back to kAll when the remembered selection's values are incomplete.
void CheckRememberedSelection(core::Selection& selection);

/// Section "Config", key "SchemeUS" of the imaging suite's INI file, read on every call.
class HostToothScheme final : public intake::ToothScheme {
 public:
  HostToothScheme(const core::Globals& globals, const core::SettingsStore& ini)
      : globals_(globals), ini_(ini) {}
  [[nodiscard]] bool SchemeUS() const override;

 private:
  const core::Globals& globals_;
  const core::SettingsStore& ini_;
};

}  // namespace varnlog::start
