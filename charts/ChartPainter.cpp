#include "charts/ChartPainter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <vector>

#include <QLocale>

#include "charts/Scale.h"

namespace varnlog::charts {

namespace {

constexpr int kMarks = 5;
constexpr double kPartOfCategory = 0.7;  // that its bars take
constexpr double kHalf = 0.5;
constexpr int kMiddle = 128;                    // of the lightness of a colour
constexpr QColor kLightFill(0xA6, 0xCE, 0xE3);  // of boxes
constexpr QColor kDarkFill(0x1F, 0x4E, 0x79);
constexpr QColor kReference(0xC0, 0x39, 0x2B);

// Told apart in all usual kinds of colour blindness (Okabe and Ito).
constexpr std::array<QColor, 8> kSeriesColors = {{{0x00, 0x72, 0xB2},
                                                  {0xE6, 0x9F, 0x00},
                                                  {0x00, 0x9E, 0x73},
                                                  {0xCC, 0x79, 0xA7},
                                                  {0x56, 0xB4, 0xE9},
                                                  {0xD5, 0x5E, 0x00},
                                                  {0xF0, 0xE4, 0x42},
                                                  {0x70, 0x70, 0x70}}};

QString Text(const std::string& text) {
  return QString::fromStdString(text);
}

/// Draws one chart; the members are found out once.
class Drawing {
 public:
  Drawing(QPainter& painter, const QRectF& area, const Chart& chart, const ChartColors& colors)
      : painter_(painter),
        chart_(chart),
        colors_(colors),
        line_(painter.fontMetrics().height()),
        fill_(colors.background.lightness() < kMiddle ? kDarkFill : kLightFill) {
    marks_ = AxisMarks(Greatest(), kMarks, chart.wholeNumbers);
    decimals_ = DecimalsOf(marks_);
    double widest = 0;
    for (const double mark : marks_) widest = std::max(widest, WidthOf(MarkText(mark)));
    legend_ = QRectF(area.left(), area.top(), area.width(), line_);
    // Above: legend and unit; to the left: numbers; below: categories.
    plot_ = area.adjusted(widest + line_, LegendHeight() + line_ * 2, -line_, -line_ * 2);
  }

  void Draw() {
    DrawAxis();
    DrawCategories();
    if (chart_.kind == Chart::Kind::kBoxes) {
      DrawBoxes();
    } else {
      DrawBars();
    }
    DrawLegend();
  }

 private:
  [[nodiscard]] double WidthOf(const QString& text) const {
    return painter_.fontMetrics().horizontalAdvance(text);
  }
  [[nodiscard]] QString MarkText(double mark) const { return QLocale().toString(mark, 'f', decimals_); }

  [[nodiscard]] double Greatest() const {
    double greatest = 0;
    for (std::size_t i = 0; i < chart_.categories.size(); ++i) {
      double sum = 0;
      for (const Series& series : chart_.series) {
        sum = chart_.kind == Chart::Kind::kStackedBars ? sum + series.values[i]
                                                       : std::max(sum, series.values[i]);
      }
      greatest = std::max(greatest, sum);
    }
    for (const auto& box : chart_.boxes) {
      if (!box) continue;
      greatest = std::max({greatest, box->upperQuartile, box->reference.value_or(0)});
      for (const double point : box->points) greatest = std::max(greatest, point);
    }
    return greatest;
  }

  [[nodiscard]] double Y(double value) const {
    return plot_.bottom() - plot_.height() * value / marks_.back();
  }
  [[nodiscard]] double CategoryWidth() const {
    return plot_.width() / static_cast<double>(std::max<std::size_t>(chart_.categories.size(), 1));
  }
  [[nodiscard]] double CategoryLeft(std::size_t category) const {
    return plot_.left() + CategoryWidth() * static_cast<double>(category);
  }

  void DrawText(const QRectF& where, int flags, const QString& text) {
    painter_.setPen(colors_.text);
    painter_.drawText(where, flags | Qt::TextSingleLine, text);
  }

  void DrawAxis() {
    DrawText(QRectF(plot_.left() - line_, plot_.top() - line_ * 1.5, plot_.width(), line_),
             Qt::AlignLeft | Qt::AlignVCenter, Text(chart_.unit));
    for (const double mark : marks_) {
      painter_.setPen(colors_.grid);
      painter_.drawLine(QPointF(plot_.left(), Y(mark)), QPointF(plot_.right(), Y(mark)));
      DrawText(
          QRectF(plot_.left() - line_ * kHalf - plot_.width(), Y(mark) - line_ * kHalf, plot_.width(), line_),
          Qt::AlignRight | Qt::AlignVCenter, MarkText(mark));
    }
  }

  void DrawCategories() {
    double widest = 1;
    for (const std::string& category : chart_.categories) widest = std::max(widest, WidthOf(Text(category)));
    const auto step = static_cast<std::size_t>(std::ceil((widest + line_) / CategoryWidth()));
    const double room = CategoryWidth() * static_cast<double>(step);
    for (std::size_t i = 0; i < chart_.categories.size(); i += step) {
      const double middle = CategoryLeft(i) + CategoryWidth() * kHalf;
      const QRectF where(middle - room * kHalf, plot_.bottom() + line_ * 0.3, room, line_);
      DrawText(where, Qt::AlignHCenter | Qt::AlignVCenter,
               painter_.fontMetrics().elidedText(Text(chart_.categories[i]), Qt::ElideRight,
                                                 static_cast<int>(room)));
    }
  }

  [[nodiscard]] static QColor ColorOf(std::size_t series) {
    return kSeriesColors[series % kSeriesColors.size()];
  }

  void DrawBars() {
    const bool stacked = chart_.kind == Chart::Kind::kStackedBars;
    const double all = CategoryWidth() * kPartOfCategory;
    const double width =
        stacked ? all : all / static_cast<double>(std::max<std::size_t>(chart_.series.size(), 1));
    for (std::size_t category = 0; category < chart_.categories.size(); ++category) {
      double left = CategoryLeft(category) + (CategoryWidth() - all) * kHalf;
      double below = 0;
      for (std::size_t i = 0; i < chart_.series.size(); ++i) {
        const double value = chart_.series[i].values[category];
        const QRectF bar(QPointF(left, Y(below + value)), QPointF(left + width, Y(below)));
        if (value > 0) painter_.fillRect(bar, ColorOf(i));
        if (stacked) below += value;
        if (!stacked) left += width;
      }
    }
  }

  void DrawBoxes() {
    painter_.setRenderHint(QPainter::Antialiasing);
    for (std::size_t i = 0; i < chart_.boxes.size(); ++i) {
      if (!chart_.boxes[i]) continue;
      const Box& box = *chart_.boxes[i];
      const double width = CategoryWidth() * kPartOfCategory * kHalf;
      const double left = CategoryLeft(i) + (CategoryWidth() - width) * kHalf;
      const QRectF body(QPointF(left, Y(box.upperQuartile)), QPointF(left + width, Y(box.lowerQuartile)));
      painter_.setPen(Pen(colors_.text, 1));
      painter_.setBrush(fill_);
      painter_.drawRect(body);
      painter_.setPen(Pen(colors_.text, 2));
      painter_.drawLine(QPointF(left, Y(box.median)), QPointF(left + width, Y(box.median)));
      for (const double point : box.points) DrawPoint({left + width * kHalf, Y(point)});
      if (!box.reference) continue;
      painter_.setPen(Pen(kReference, 2, Qt::DashLine));
      painter_.drawLine(QPointF(CategoryLeft(i), Y(*box.reference)),
                        QPointF(CategoryLeft(i) + CategoryWidth(), Y(*box.reference)));
    }
    painter_.setRenderHint(QPainter::Antialiasing, false);
  }

  /// As wide as on a screen, whatever the device's resolution.
  [[nodiscard]] QPen Pen(const QColor& color, int pixels, Qt::PenStyle style = Qt::SolidLine) const {
    constexpr double kPixelsOfLine = 16;
    return {color, pixels * line_ / kPixelsOfLine, style};
  }

  void DrawPoint(const QPointF& where) {
    const double radius = line_ * 0.2;
    painter_.setPen(Pen(colors_.background, 1));
    painter_.setBrush(ColorOf(5));
    painter_.drawEllipse(where, radius, radius);
  }

  /// The entry of the legend, after the one before it or on a line of its own.
  struct Entry {
    std::string name;
    std::function<void(const QRectF&)> drawSign;
  };
  [[nodiscard]] std::vector<Entry> LegendEntries() {
    std::vector<Entry> entries;
    for (std::size_t i = 0; i < chart_.series.size(); ++i)
      entries.push_back(
          {chart_.series[i].name, [this, i](const QRectF& sign) { painter_.fillRect(sign, ColorOf(i)); }});
    if (chart_.kind == Chart::Kind::kBoxes) {
      entries.push_back({chart_.boxName, [this](const QRectF& sign) { painter_.fillRect(sign, fill_); }});
      entries.push_back({chart_.pointsName, [this](const QRectF& sign) { DrawPoint(sign.center()); }});
      entries.push_back({chart_.referenceName, [this](const QRectF& sign) {
                           painter_.setPen(Pen(kReference, 2, Qt::DashLine));
                           painter_.drawLine(QPointF(sign.left(), sign.center().y()),
                                             QPointF(sign.right(), sign.center().y()));
                         }});
    }
    std::erase_if(entries, [](const Entry& entry) { return entry.name.empty(); });
    return entries;
  }

  /// Where each entry stands.
  [[nodiscard]] std::vector<QRectF> LegendPlaces(const std::vector<Entry>& entries) const {
    std::vector<QRectF> places;
    QPointF at(legend_.left() + line_ * kHalf, legend_.top());
    for (const Entry& entry : entries) {
      const double width = line_ * 2.5 + WidthOf(Text(entry.name));
      if (!places.empty() && at.x() + width > legend_.right())
        at = {legend_.left() + line_ * kHalf, at.y() + line_ * 1.2};
      places.emplace_back(at, QSizeF(width, line_));
      at.rx() += width;
    }
    return places;
  }
  [[nodiscard]] double LegendHeight() {
    const auto places = LegendPlaces(LegendEntries());
    return places.empty() ? 0 : places.back().bottom() - legend_.top();
  }

  void DrawLegend() {
    const auto entries = LegendEntries();
    const auto places = LegendPlaces(entries);
    for (std::size_t i = 0; i < entries.size(); ++i) {
      const QRectF& place = places[i];
      entries[i].drawSign(QRectF(place.left(), place.top() + line_ * 0.2, line_ * 0.8, line_ * 0.6));
      DrawText(place.adjusted(line_, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter, Text(entries[i].name));
    }
  }

  QPainter& painter_;
  const Chart& chart_;
  const ChartColors& colors_;
  double line_;
  QColor fill_;
  std::vector<double> marks_;
  int decimals_ = 0;
  QRectF plot_;
  QRectF legend_;
};

}  // namespace

ChartColors ChartColors::Of(const QPalette& palette) {
  return {palette.color(QPalette::Text), palette.color(QPalette::Mid), palette.color(QPalette::Base)};
}

void PaintChart(QPainter& painter, const QRectF& area, const Chart& chart, const ChartColors& colors) {
  painter.save();
  Drawing(painter, area, chart, colors).Draw();
  painter.restore();
}

}  // namespace varnlog::charts
