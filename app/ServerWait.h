#pragma once

#include <memory>

#include <QElapsedTimer>
#include <QTimer>

#include "core/TextLookup.h"
#include "db/dao/DBEngine.h"
#include "ui/WaitWindow.h"

namespace varnlog::app {

/// What the user sees while a server is being reached: his windows go on drawing themselves, and what takes
/// longer can be given up.
class ServerWait {
 public:
  /// For what `engine` waits for as long as this lives.
  ServerWait(const core::TextLookup& texts, dao::DBEngine& engine);

 private:
  /// Called again and again while a connection is being made; false gives it up.
  [[nodiscard]] bool GoesOn();
  [[nodiscard]] bool ShowsOn();

  const core::TextLookup& texts_;
  QElapsedTimer begin_;
  QTimer over_;  // the connection stands, or has failed
  std::unique_ptr<ui::WaitWindow> window_;
  bool isShowing_ = false;
  dao::WaitingScope scope_;
};

}  // namespace varnlog::app
