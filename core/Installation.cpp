#include "core/Installation.h"

#include <filesystem>
#include <system_error>

#include "platform/Files.h"
#include "platform/Process.h"

namespace varnlog::core {

namespace {

constexpr const char* kFolderVariable = "VARNLOG_FOLDER";

std::string Joined(std::string_view folder, std::string_view name) {
  return platform::FromPath(platform::ToPath(folder) / platform::ToPath(name));
}

std::string Absolute(const std::string& folder) {
  std::error_code error;
  const auto path = std::filesystem::absolute(platform::ToPath(folder), error);
  return error ? folder : platform::FromPath(path);
}

}  // namespace

void SetProgramFolder(Globals& globals, const std::string& given) {
  const std::string named = given.empty() ? platform::EnvironmentVariable(kFolderVariable) : given;
  globals.ProgramFolderGl =
      named.empty() ? platform::FromPath(platform::ExecutableFolder()) : Absolute(named);
  globals.IniFileGl = InProgramFolder(globals, kSettingsFile);
}

std::string InProgramFolder(const Globals& globals, std::string_view name) {
  return Joined(globals.ProgramFolderGl, name);
}

std::string DeliveredFile(const Globals& globals, std::string_view name) {
  std::string own = InProgramFolder(globals, name);
  std::error_code error;
  if (std::filesystem::exists(platform::ToPath(own), error)) return own;
  const std::filesystem::path shared = platform::ExecutableFolder() / platform::ToPath(name);
  return std::filesystem::exists(shared, error) ? platform::FromPath(shared) : own;
}

std::string InSuiteFolder(const Globals& globals, std::string_view name) {
  return platform::FromPath(platform::ToPath(globals.ProgramFolderGl) / ".." / platform::ToPath(name));
}

void SetDataFolder(Globals& globals, const std::string& folder) {
  globals.DataPathGl = folder;
  globals.ExchangeFileGl = folder + std::string(kExchangeFile);
}

}  // namespace varnlog::core
