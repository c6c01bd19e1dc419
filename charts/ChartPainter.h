#pragma once

#include <QColor>
#include <QPainter>
#include <QPalette>

#include "charts/Chart.h"

namespace varnlog::charts {

/// What is drawn in which colour. Series have colours that differ in brightness as well, so that they can be
/// told apart by everybody and on grey paper.
struct ChartColors {
  QColor text;
  QColor grid;
  QColor background;

  [[nodiscard]] static ChartColors OnPaper() { return {Qt::black, QColor(0xD0, 0xD0, 0xD0), Qt::white}; }
  [[nodiscard]] static ChartColors Of(const QPalette& palette);
};

/// Draws the chart into the area, in the painter's font. Texts are drawn as they are, whatever they look
/// like; those of categories for which there is no room are left out evenly.
void PaintChart(QPainter& painter, const QRectF& area, const Chart& chart, const ChartColors& colors);

}  // namespace varnlog::charts
