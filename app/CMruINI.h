#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/SettingsStore.h"

namespace varnlog::app {

/// One entry of the menu of recently used files.
struct MruEntry {
  std::string caption;  // "&1. C:\Data\Varnlog.mdb"
  std::string path;
  std::string tag;
};

/// The menu that shows the list.
class MruMenu {
 public:
  virtual ~MruMenu() = default;
  /// Replaces all entries.
  virtual void ShowEntries(const std::vector<MruEntry>& entries) = 0;
};

/// Keeps the recently used files, most recent first, in an INI file and shows them in a menu. A path that an
/// INI value cannot hold whole (more than 255 characters, a line break) does not enter the list: cut, it
/// would offer a file that cannot be opened, or another one.
class CMruINI {
 public:
  explicit CMruINI(core::SettingsStore& settings);

  /// The executable's name followed by ".ini" unless set.
  [[nodiscard]] const std::string& IniFile() const { return iniFile_; }
  void SetIniFile(std::string_view file) { iniFile_ = file; }
  [[nodiscard]] const std::string& Section() const { return section_; }
  void SetSection(std::string_view section) { section_ = section; }
  [[nodiscard]] const std::string& Prefix() const { return prefix_; }
  void SetPrefix(std::string_view prefix) { prefix_ = prefix; }
  /// Empty: no tags are kept.
  [[nodiscard]] const std::string& TagPrefix() const { return tagPrefix_; }
  void SetTagPrefix(std::string_view prefix) { tagPrefix_ = prefix; }
  [[nodiscard]] int MaxMRUItems() const { return maxItems_; }
  void SetMaxMRUItems(int items) { maxItems_ = items; }
  /// Not owned.
  [[nodiscard]] MruMenu* MenuItem() const { return menu_; }
  void SetMenuItem(MruMenu* menu) { menu_ = menu; }

  /// Reads the list and shows it.
  void GetMRUList();
  /// Puts a file at the head of the list, saves and shows it. A path stands in it once, whatever the case of
  /// its letters.
  void SetMRUList(std::string_view path, std::string_view tag);

 private:
  [[nodiscard]] std::vector<MruEntry> Read() const;
  void Write(const std::vector<MruEntry>& entries);
  void WriteValue(const std::string& key, const std::string& value);
  void Show(std::vector<MruEntry> entries) const;

  core::SettingsStore& settings_;
  std::string iniFile_;
  std::string section_ = "MRU List";
  std::string prefix_ = "MRU";
  std::string tagPrefix_ = "MRUTAG";
  int maxItems_ = 4;
  MruMenu* menu_ = nullptr;
};

}  // namespace varnlog::app
