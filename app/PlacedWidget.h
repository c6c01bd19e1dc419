#pragma once

#include <QWidget>

#include "app/CFormPosIni.h"

namespace varnlog::app {

/// Keeps the place of a window of Qt, under the window's object name. The window outlives it.
class PlacedWidget final : public PlacedWindow {
 public:
  explicit PlacedWidget(QWidget& window) : window_(window) {}

  [[nodiscard]] std::string Name() const override;
  [[nodiscard]] WindowPlace Place() const override;
  [[nodiscard]] WindowState State() const override;
  void SetState(WindowState state) override;
  /// Out of the icon state, into the one before it.
  void Uncover();
  /// Whatever the INI file says, the window can be seen and reached with the mouse.
  void MoveTo(const WindowPlace& place) override;
  [[nodiscard]] int ScreenWidth() const override;
  [[nodiscard]] int ScreenHeight() const override;

 private:
  QWidget& window_;
};

}  // namespace varnlog::app
