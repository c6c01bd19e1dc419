#pragma once

#include <string>
#include <string_view>

#include "core/SettingsStore.h"

namespace varnlog::app {

enum class WindowState { kNormal = 0, kMinimised = 1, kMaximised = 2 };

/// A place on the screen, in device-independent pixels.
struct WindowPlace {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
};

/// The window whose position is kept.
class PlacedWindow {
 public:
  virtual ~PlacedWindow() = default;
  [[nodiscard]] virtual std::string Name() const = 0;
  [[nodiscard]] virtual WindowPlace Place() const = 0;
  [[nodiscard]] virtual WindowState State() const = 0;
  virtual void SetState(WindowState state) = 0;
  virtual void MoveTo(const WindowPlace& place) = 0;
  [[nodiscard]] virtual int ScreenWidth() const = 0;
  [[nodiscard]] virtual int ScreenHeight() const = 0;
};

/// Keeps a window's position in one INI value such as "L=10;T=20;W=800;H=600;S=0".
class CFormPosIni {
 public:
  explicit CFormPosIni(core::SettingsStore& settings);

  [[nodiscard]] PlacedWindow* Form() const { return form_; }
  /// Not owned.
  void SetForm(PlacedWindow* form) { form_ = form; }
  /// The executable's name followed by ".ini" unless set.
  [[nodiscard]] const std::string& IniFile() const { return iniFile_; }
  void SetIniFile(std::string_view file) { iniFile_ = file; }

  /// False when nothing was saved that can be read. A saved minimised or maximised state is applied without
  /// the numbers. With `keepVisible` a place beyond the right or lower edge of the screen is pulled back to
  /// it; widths and heights are handed on as they were saved, at most a million either way.
  bool RestoreForm(bool keepVisible);
  void SaveForm();
  /// In the middle of the screen.
  void CenterForm();

 private:
  core::SettingsStore& settings_;
  PlacedWindow* form_ = nullptr;
  std::string iniFile_;
};

}  // namespace varnlog::app
