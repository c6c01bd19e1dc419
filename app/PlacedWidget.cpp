#include "app/PlacedWidget.h"

#include <algorithm>

#include <QGuiApplication>
#include <QScreen>

namespace varnlog::app {

namespace {

// Pixels; no screen is farther away, and sums of two such places are still numbers.
constexpr int kFarthest = 1'000'000;

}  // namespace

std::string PlacedWidget::Name() const {
  return window_.objectName().toStdString();
}

WindowPlace PlacedWidget::Place() const {
  const QRect place = window_.isMaximized() ? window_.normalGeometry() : QRect(window_.pos(), window_.size());
  return {place.x(), place.y(), place.width(), place.height()};
}

WindowState PlacedWidget::State() const {
  if (window_.isMinimized()) return WindowState::kMinimised;
  return window_.isMaximized() ? WindowState::kMaximised : WindowState::kNormal;
}

void PlacedWidget::SetState(WindowState state) {
  window_.setWindowState(state == WindowState::kMinimised   ? Qt::WindowMinimized
                         : state == WindowState::kMaximised ? Qt::WindowMaximized
                                                            : Qt::WindowNoState);
}

void PlacedWidget::Uncover() {
  if (window_.isMinimized()) window_.setWindowState(window_.windowState() & ~Qt::WindowMinimized);
}

void PlacedWidget::MoveTo(const WindowPlace& place) {
  // On the screen where it was, or on this one when that screen is gone.
  const auto bounded = [](int value) { return std::clamp(value, -kFarthest, kFarthest); };
  const QRect wanted(bounded(place.left), bounded(place.top), bounded(place.width), bounded(place.height));
  const QScreen* at = QGuiApplication::screenAt(wanted.center());
  const QRect available = (at != nullptr ? at : window_.screen())->availableGeometry();
  const QSize size = wanted.size().expandedTo(window_.minimumSizeHint()).boundedTo(available.size());
  window_.resize(size);
  window_.move(std::clamp(wanted.left(), available.left(), available.right() - size.width() + 1),
               std::clamp(wanted.top(), available.top(), available.bottom() - size.height() + 1));
}

int PlacedWidget::ScreenWidth() const {
  return window_.screen()->geometry().width();
}

int PlacedWidget::ScreenHeight() const {
  return window_.screen()->geometry().height();
}

}  // namespace varnlog::app
