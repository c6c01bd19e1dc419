#include "charts/ChartWidget.h"

#include <QPainter>

#include "charts/ChartPainter.h"

namespace varnlog::charts {

namespace {

constexpr int kLinesHigh = 18;
constexpr int kLinesWide = 48;

}  // namespace

ChartWidget::ChartWidget(const Page& page, QWidget* parent) : QWidget(parent), page_(page) {
  setAccessibleName(QString::fromStdString(page.title));
}

QSize ChartWidget::sizeHint() const {
  return {fontMetrics().height() * kLinesWide, fontMetrics().height() * kLinesHigh};
}

QSize ChartWidget::minimumSizeHint() const {
  return sizeHint() / 2;
}

void ChartWidget::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().color(QPalette::Base));
  PaintChart(painter, rect().adjusted(0, fontMetrics().height() / 2, 0, 0), page_.chart,
             ChartColors::Of(palette()));
}

}  // namespace varnlog::charts
