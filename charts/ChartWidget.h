#pragma once

#include <QWidget>

#include "charts/Chart.h"

namespace varnlog::charts {

/// A chart on the screen, in the colours and the font of the window. Its numbers are for a table beside it;
/// `page` outlives the widget.
class ChartWidget final : public QWidget {
 public:
  explicit ChartWidget(const Page& page, QWidget* parent = nullptr);

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  const Page& page_;
};

}  // namespace varnlog::charts
