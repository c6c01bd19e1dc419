#pragma once

#include <memory>

#include <QElapsedTimer>
#include <QTimer>

#include "core/TextLookup.h"
#include "ui/WaitWindow.h"

namespace varnlog::app {

/// What the user sees while a server is being reached: his windows go on drawing themselves, and what takes
/// longer can be given up.
class ServerWait {
 public:
  explicit ServerWait(const core::TextLookup& texts);

  /// Called again and again while a connection is being made; false gives it up.
  [[nodiscard]] bool GoesOn();

 private:
  const core::TextLookup& texts_;
  QElapsedTimer begin_;
  QTimer over_;  // nobody has called for a moment: the connection stands, or has failed
  std::unique_ptr<ui::WaitWindow> window_;
  bool isShowing_ = false;
};

}  // namespace varnlog::app
