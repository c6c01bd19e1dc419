#include "app/ServerWait.h"

#include <algorithm>

#include <QApplication>

#include "ui/QtText.h"

namespace varnlog::app {

using core::literals::operator""_key;

namespace {

constexpr int kMillisecondsUntilMade = 300;  // the window shows itself a second later
constexpr double kMillisecondsOfPatience = 5'000;

}  // namespace

ServerWait::ServerWait(const core::TextLookup& texts, dao::DBEngine& engine)
    : texts_(texts), scope_(engine, [this] { return GoesOn(); }) {
  over_.setSingleShot(true);
  over_.setInterval(0);
  QObject::connect(&over_, &QTimer::timeout, [this] {
    begin_.invalidate();
    window_.reset();
  });
}

// Between two calls nobody handles events: the timer ends only when the connection stands or has failed.
bool ServerWait::GoesOn() {
  over_.stop();
  const bool goesOn = ShowsOn();
  over_.start();
  return goesOn;
}

bool ServerWait::ShowsOn() {
  if (!begin_.isValid()) begin_.start();
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
