#include "report/PaintedReport.h"

#include <algorithm>

#include <QFontDatabase>
#include <QPainterPath>

#include "platform/Paper.h"
#include "report/ReportErrors.h"

namespace varnlog::report {

namespace {

constexpr double kPointsPerInch = 72;

PageArea AreaOf(const QPageLayout& page) {
  const QRectF inside = page.paintRect(QPageLayout::Point);
  return {inside.width(), inside.height()};
}

class PainterCanvas final : public ReportCanvas {
 public:
  PainterCanvas(QPainter& painter, const std::vector<QFont>& fonts) : painter_(painter), fonts_(fonts) {}

  void DrawText(double left, double baseline, std::string_view text, int font, bool rightToLeft) override {
    if (font != font_) {
      font_ = font;
      painter_.setFont(fonts_[static_cast<std::size_t>(font)]);
    }
    const Qt::LayoutDirection direction = rightToLeft ? Qt::RightToLeft : Qt::LeftToRight;
    if (painter_.layoutDirection() != direction) painter_.setLayoutDirection(direction);
    painter_.drawText(Point(left, baseline), ToDrawnText(text));
  }

  void DrawRule(double x1, double y1, double x2, double y2, double thickness) override {
    if (thickness != thickness_) {
      thickness_ = thickness;
      painter_.setPen(QPen(Qt::black, thickness * kFontUnitsPerPoint, Qt::SolidLine, Qt::FlatCap));
    }
    painter_.drawLine(Point(x1, y1), Point(x2, y2));
  }

  // One path: modules that touch would show hairlines between them when drawn one by one.
  void DrawSymbol(double left, double top, double side, const QrCode& symbol) override {
    if (symbol.width == 0) return;
    const double module = side / symbol.width;
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    for (int row = 0; row < symbol.width; ++row) {
      for (int column = 0; column < symbol.width; ++column) {
        if (!symbol.IsDark(row, column)) continue;
        path.addRect(QRectF(Point(left + column * module, top + row * module),
                            QSizeF(module, module) * kFontUnitsPerPoint));
      }
    }
    painter_.fillPath(path, Qt::black);
  }

 private:
  static QPointF Point(double x, double y) { return {x * kFontUnitsPerPoint, y * kFontUnitsPerPoint}; }

  QPainter& painter_;
  const std::vector<QFont>& fonts_;
  int font_ = -1;
  double thickness_ = -1;
};

class SavedState {
 public:
  explicit SavedState(QPainter& painter) : painter_(painter) { painter_.save(); }
  ~SavedState() { painter_.restore(); }
  SavedState(const SavedState&) = delete;
  SavedState& operator=(const SavedState&) = delete;

 private:
  QPainter& painter_;
};

std::vector<QFont> RequireFonts(const ReportDesign& design) {
  if (QFontDatabase::families().isEmpty()) throw PrintError("no font is installed");
  return MakeFonts(design);
}

}  // namespace

QPageLayout DefaultPageLayout(const ReportDesign& design) {
  const bool letter = platform::SystemPaper() == platform::Paper::kLetter || design.paper == "Letter";
  const double margin = design.margin;
  return {QPageSize(letter ? QPageSize::Letter : QPageSize::A4), QPageLayout::Landscape,
          QMarginsF(margin, margin, margin, margin), QPageLayout::Point};
}

PaintedReport::PaintedReport(const ReportJob& job, const QPageLayout& page)
    : fonts_(RequireFonts(job.design)),
      metrics_(fonts_),
      layout_(job.design, job.report, job.rows, job.shortDate, metrics_, AreaOf(page),
              job.withEntries ? job.laterEntries : LaterEntriesOf()) {}

void PaintedReport::PaintPage(QPainter& painter, int page) {
  const SavedState saved(painter);
  const double unitsPerInch = kPointsPerInch * kFontUnitsPerPoint;
  painter.scale(layout_.Scale() * painter.device()->logicalDpiX() / unitsPerInch,
                layout_.Scale() * painter.device()->logicalDpiY() / unitsPerInch);
  painter.setPen(Qt::black);
  PainterCanvas canvas(painter, fonts_);
  layout_.PaintPage(page, canvas);
}

bool PaintedReport::Paint(QPagedPaintDevice& device, PageRange range, ReportProgress& progress) {
  QPainter painter;
  if (!painter.begin(&device)) throw PrintError("the device cannot be drawn on");
  const int first = std::max(range.first, 1);
  const int last = range.last == 0 ? PageCount() : std::min(range.last, PageCount());
  for (int page = first; page <= last; ++page) {
    if (!progress.Painting(page, PageCount())) return false;
    if (page > first && !device.newPage()) throw PrintError("no further page can be begun");
    PaintPage(painter, page);
  }
  if (!painter.end()) throw PrintError("the last page cannot be finished");
  return progress.Painting(PageCount(), PageCount());
}

}  // namespace varnlog::report
