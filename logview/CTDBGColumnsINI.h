#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/SettingsStore.h"

namespace varnlog::logview {

/// The columns of a grid as far as their widths go.
class ColumnWidths {
 public:
  virtual ~ColumnWidths() = default;
  [[nodiscard]] virtual int ColumnCount() const = 0;
  [[nodiscard]] virtual int Width(int column) const = 0;
  virtual void SetWidth(int column, int width) = 0;
};

/// Keeps the widths of a grid's columns in one INI value such as "W0=600;W1=1200;".
class CTDBGColumnsINI {
 public:
  /// Numbers in an INI file can be anything; no column is set wider than this.
  static constexpr std::int32_t kWidest = 100'000;

  explicit CTDBGColumnsINI(core::SettingsStore& settings) : settings_(settings) {}

  void SetIniFile(std::string_view file) { iniFile_ = file; }
  void SetSection(std::string_view section) { section_ = section; }
  void SetKeyName(std::string_view key) { keyName_ = key; }
  /// Not owned; must outlive the calls below. Without a grid they do nothing.
  void SetTDBGrid(ColumnWidths* grid) { grid_ = grid; }

  /// Always true: a width that could not be saved is not worth a message.
  bool SaveColumns();
  /// Columns without an entry keep their width.
  void RestoreColumns();

 private:
  core::SettingsStore& settings_;
  ColumnWidths* grid_ = nullptr;
  std::string iniFile_;
  std::string section_;
  std::string keyName_;
};

}  // namespace varnlog::logview
