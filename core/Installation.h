#pragma once

#include <string>
#include <string_view>

#include "core/Globals.h"

namespace varnlog::core {

// The program folder: what belongs to this installation.
inline constexpr std::string_view kSettingsFile = "varnlog.ini";

// What comes with the program; see DeliveredFile().
inline constexpr std::string_view kLanguageDatabase = "verbalo.mdb";
inline constexpr std::string_view kEmptyLog = "varnlog.md0";
inline constexpr std::string_view kWorkgroupFile = "system.mdw";
inline constexpr std::string_view kHelpFolder = "help";

// The imaging suite's folder, one above the program folder.
inline constexpr std::string_view kSuiteSettings = "kalvero.ini";
inline constexpr std::string_view kAcquisitionSettings = "fotavex.ini";
inline constexpr std::string_view kSuiteLibrary = "KVFILEDB.DLL";

// The imaging suite's data folder.
inline constexpr std::string_view kExchangeFile = "varnlog.sdx";
inline constexpr std::string_view kDefaultLog = "Varnlog.mdb";

/// The program folder is `given`, else the one that the environment's VARNLOG_FOLDER names, else the
/// executable's; the settings file lies in it. A relative folder is taken from the current one.
void SetProgramFolder(Globals& globals, const std::string& given);

[[nodiscard]] std::string InProgramFolder(const Globals& globals, std::string_view name);

/// A file or folder that comes with the program: the program folder's own where there is one, else the one
/// beside the executable, where a package of the system keeps what all installations share. Where there is
/// none at all, the place in the program folder, for messages to name.
[[nodiscard]] std::string DeliveredFile(const Globals& globals, std::string_view name);

[[nodiscard]] std::string InSuiteFolder(const Globals& globals, std::string_view name);

/// The data folder, and with it the place of the exchange file. `folder` ends with its separator, or is "".
void SetDataFolder(Globals& globals, const std::string& folder);

}  // namespace varnlog::core
