#include "exports/Separator.h"

#include "platform/ListSeparator.h"

namespace varnlog::exports {

char ListSeparatorOf(const core::SettingsStore& settings, const std::string& iniFile) {
  const std::string name = settings.ReadString(kExportSection, kSeparatorKey, iniFile);
  if (name == "semicolon") return ';';
  if (name == "comma") return ',';
  if (name == "tab") return '\t';
  return platform::ListSeparator();
}

}  // namespace varnlog::exports
