#include "ui/Theme.h"

#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QStyle>
#include <QSvgRenderer>
#include <QWidget>

// A static library's resources register themselves only when asked to, and that only outside of a namespace.
static void RegisterIcons() {
  Q_INIT_RESOURCE(icons);
}

namespace varnlog::ui {

namespace {

struct IconColors {
  QColor ink;
  QColor accent;
  QColor paper;
};

QColor Mixed(const QColor& a, const QColor& b, double share) {
  const auto mix = [share](int x, int y) { return static_cast<int>(x * share + y * (1 - share)); };
  return {mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue())};
}

IconColors ColorsFor(const QPalette& palette, QIcon::Mode mode) {
  const bool dark = IsDark(palette);
  const QColor window = palette.color(QPalette::Active, QPalette::Window);
  // Lines a little softer than text, which is thinner.
  constexpr double kSoft = 0.85;
  IconColors colors{Mixed(palette.color(QPalette::Active, QPalette::WindowText), window, kSoft),
                    dark ? QColor(0x62, 0xb0, 0xf5) : QColor(0x1a, 0x6f, 0xc4),
                    dark ? window.darker(140) : QColor(0xfd, 0xfd, 0xfd)};
  if (mode == QIcon::Disabled) {
    constexpr double kFaded = 0.4;
    colors = {Mixed(colors.ink, window, kFaded), Mixed(colors.ink, window, kFaded / 2),
              Mixed(colors.paper, window, kFaded)};
  }
  return colors;
}

QByteArray Source(const QString& name) {
  RegisterIcons();
  QFile file(":/icons/" + name + ".svg");
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QPixmap Rendered(const QByteArray& svg, const QSize& size) {
  QPixmap pixmap(size);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  QSvgRenderer(svg).render(&painter);
  return pixmap;
}

/// Draws the SVG anew for every size, scale and palette.
class ThemedIconEngine final : public QIconEngine {
 public:
  ThemedIconEngine(QString name, QByteArray svg) : name_(std::move(name)), svg_(std::move(svg)) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
    const qreal scale = painter->device()->devicePixelRatioF();
    painter->drawPixmap(rect, pixmap((QSizeF(rect.size()) * scale).toSize(), mode, state));
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State /*state*/) override {
    const IconColors colors = ColorsFor(QGuiApplication::palette(), mode);
    const QString key = QStringList{"varnlog",
                                    name_,
                                    QString::number(size.width()),
                                    QString::number(size.height()),
                                    colors.ink.name(),
                                    colors.accent.name(),
                                    colors.paper.name()}
                            .join(':');
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap)) return pixmap;
    QByteArray svg = svg_;
    svg.replace("#202020", colors.ink.name().toLatin1());
    svg.replace("#1a6fc4", colors.accent.name().toLatin1());
    svg.replace("#fdfdfd", colors.paper.name().toLatin1());
    pixmap = Rendered(svg, size);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
  }

  [[nodiscard]] QIconEngine* clone() const override { return new ThemedIconEngine(name_, svg_); }

 private:
  QString name_;
  QByteArray svg_;
};

}  // namespace

bool IsDark(const QPalette& palette) {
  return palette.color(QPalette::Active, QPalette::Window).lightness() <
         palette.color(QPalette::Active, QPalette::WindowText).lightness();
}

QIcon ThemedIcon(const QString& name) {
  QByteArray svg = Source(name);
  return svg.isEmpty() ? QIcon() : QIcon(new ThemedIconEngine(name, std::move(svg)));
}

QPixmap MessagePicture(const QString& name, const QWidget& window) {
  const int size = window.style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, &window);
  return ThemedIcon(name).pixmap(QSize(size, size), window.devicePixelRatioF());
}

QIcon ProgramIcon() {
  // Window systems ask which sizes there are.
  constexpr int kSizes[] = {16, 24, 32, 48, 64, 128, 256};
  const QByteArray svg = Source("Varnlog");
  QIcon icon;
  for (const int size : kSizes) icon.addPixmap(Rendered(svg, {size, size}));
  return icon;
}

}  // namespace varnlog::ui
