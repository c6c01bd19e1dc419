#include "tools/screenshots/Album.h"

#include <stdexcept>

#include <QApplication>
#include <QPainter>

#include "platform/Files.h"
#include "ui/QtText.h"

namespace varnlog::tools {

namespace {

constexpr int kTitleHeight = 28;
constexpr int kIcon = 16;
constexpr int kPadding = 6;

void DrawFrame(QPainter& painter, const QRect& frame, const QWidget& window) {
  const QPalette palette = QApplication::palette();
  const QRect title(0, 0, frame.width(), kTitleHeight);
  painter.fillRect(title, palette.color(QPalette::Mid));
  const QIcon icon = window.windowIcon().isNull() ? QApplication::windowIcon() : window.windowIcon();
  icon.paint(&painter, QRect(kPadding, kPadding, kIcon, kIcon));
  // "[*]" marks where the title of a changed document gets its star.
  QString text = window.windowTitle();
  text.remove(QLatin1String("[*]"));
  painter.setPen(palette.color(QPalette::WindowText));
  painter.drawText(title.adjusted(2 * kPadding + kIcon, 0, -kPadding, 0), Qt::AlignLeft | Qt::AlignVCenter,
                   text);
  painter.drawRect(frame.adjusted(0, 0, -1, -1));
}

void DrawPopups(QPainter& painter, const QWidget& window, const QPoint& origin) {
  for (QWidget* popup : QApplication::topLevelWidgets()) {
    if (!popup->isVisible() || popup->windowType() != Qt::Popup) continue;
    painter.drawPixmap(popup->pos() - window.mapToGlobal(QPoint(0, 0)) + origin, popup->grab());
  }
}

}  // namespace

void Album::Add(const QString& name, QWidget& window) const {
  const QPoint origin(1, kTitleHeight);
  const QRect frame(QPoint(0, 0), window.size() + QSize(2, kTitleHeight + 1));
  const qreal scale = window.devicePixelRatioF();
  QImage picture((QSizeF(frame.size()) * scale).toSize(), QImage::Format_RGB32);
  picture.setDevicePixelRatio(scale);
  picture.fill(Qt::white);
  QPainter painter(&picture);
  DrawFrame(painter, frame, window);
  painter.drawPixmap(origin, window.grab());
  DrawPopups(painter, window, origin);
  painter.end();
  const QString file =
      ui::ToQString(platform::FromPath(folder_)) + QLatin1Char('/') + name + QStringLiteral(".png");
  if (!picture.save(file)) throw std::runtime_error("cannot write " + file.toStdString());
}

}  // namespace varnlog::tools
