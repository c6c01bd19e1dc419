#include "app/ServerWait.h"

#include <algorithm>

#include <QApplication>

#include "ui/QtText.h"

namespace varnlog::app {

using core::literals::operator""_key;

namespace {

constexpr int kMillisecondsUntilMade = 300;  // the window shows itself a second later
constexpr int kMillisecondsUntilOver = 300;
constexpr double kMillisecondsOfPatience = 5'000;

}  // namespace

ServerWait::ServerWait(const core::TextLookup& texts) : texts_(texts) {
  over_.setSingleShot(true);
  over_.setInterval(kMillisecondsUntilOver);
  QObject::connect(&over_, &QTimer::timeout, [this] {
    begin_.invalidate();
    window_.reset();
  });
}

bool ServerWait::GoesOn() {
  if (!begin_.isValid()) begin_.start();
  over_.start();
  if (begin_.elapsed() < kMillisecondsUntilMade || isShowing_) {
    QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    return true;
  }
  if (window_ == nullptr)
    window_ = std::make_unique<ui::WaitWindow>(QApplication::activeWindow(), texts_, "dlgConnecting");
  // Being modal it lets keys and clicks through to itself alone.
  isShowing_ = true;
  const bool goesOn =
      window_->Show(ui::Caption(texts_, "MN_CONNECTING"_key),
                    std::min(static_cast<double>(begin_.elapsed()) / kMillisecondsOfPatience, 1.0));
  QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  isShowing_ = false;
  if (!goesOn) {
    window_.reset();
    begin_.invalidate();
  }
  return goesOn;
}

}  // namespace varnlog::app
