#pragma once

#include <string>
#include <string_view>

#include "core/SettingsStore.h"

namespace varnlog::ui {

/// The folder in which a dialog for saving begins, kept in the settings from one time to the next.
class SaveFolder {
 public:
  SaveFolder(core::SettingsStore& ini, const std::string& iniFile, std::string_view section,
             std::string_view key)
      : ini_(ini), iniFile_(iniFile), section_(section), key_(key) {}

  /// The one used last, or the user's documents when there is none (any more).
  [[nodiscard]] std::string Last() const;
  void Keep(std::string_view folder);

 private:
  core::SettingsStore& ini_;
  const std::string& iniFile_;
  std::string_view section_;
  std::string_view key_;
};

/// A title as the name of a file: without what one or the other system takes for something else there.
[[nodiscard]] std::string FileNameFor(std::string_view title, std::string_view ending);

}  // namespace varnlog::ui
