#include "charts/PagePainter.h"

#include <algorithm>

#include <QFontMetricsF>
#include <QImage>
#include <QLocale>
#include <QPageLayout>

#include "charts/ChartPainter.h"

namespace varnlog::charts {

namespace {

constexpr double kPointsPerInch = 72;
constexpr int kTextSize = 9;
constexpr int kTitleSize = 13;
constexpr double kLine = 13;
constexpr double kTitleLine = 20;
constexpr double kGap = 8;
constexpr double kPartOfChart = 0.5;  // of a sheet's height
constexpr double kNothing = 0.1;      // wider than any rounding

QFont FontOf(int points, bool bold = false) {
  QFont font;
  font.setPixelSize(points);  // the painter counts in points
  font.setBold(bold);
  return font;
}

QString Text(const std::string& text) {
  return QString::fromStdString(text);
}

void DrawLine(QPainter& painter, const QRectF& where, const QString& text, int align = Qt::AlignLeft) {
  const QString cut =
      QFontMetricsF(painter.font()).elidedText(text, Qt::ElideRight, where.width() + kNothing);
  painter.drawText(where, align | Qt::AlignVCenter | Qt::TextSingleLine, cut);
}

/// As wide as their contents; what is left over or missing is shared out.
std::vector<double> ColumnWidths(const Table& table, double room) {
  const QFontMetricsF metrics(FontOf(kTextSize, true));
  std::vector<double> widths;
  double sum = 0;
  for (std::size_t column = 0; column < table.headings.size(); ++column) {
    double width = metrics.horizontalAdvance(Text(table.headings[column]));
    for (const auto& row : table.rows)
      width = std::max(width, metrics.horizontalAdvance(ValueText(row[column])));
    widths.push_back(width + 2 * kGap);
    sum += widths.back();
  }
  for (double& width : widths) width *= std::min(room / sum, 1.0);
  return widths;
}

std::vector<Value> Headings(const Table& table) {
  std::vector<Value> cells;
  for (const std::string& heading : table.headings) cells.push_back({.text = heading});
  return cells;
}

}  // namespace

QString ValueText(const Value& value) {
  return value.number ? QLocale().toString(*value.number, 'f', value.decimals) : Text(value.text);
}

void PaintFigure(QPainter& painter, const Page& page) {
  const QRectF whole(QPointF(0, 0), kFigure);
  painter.fillRect(whole, Qt::white);
  painter.setPen(Qt::black);
  painter.setFont(FontOf(kTitleSize, true));
  DrawLine(painter, {kGap, kGap, whole.width() - 2 * kGap, kTitleLine}, Text(page.title));
  painter.setFont(FontOf(kTextSize));
  const double noteTop = whole.height() - kLine - kGap;
  PaintChart(painter, whole.adjusted(kGap, kTitleLine + 2 * kGap, -kGap, noteTop - whole.height() - kGap),
             page.chart, ChartColors::OnPaper());
  painter.setPen(Qt::black);
  DrawLine(painter, {kGap, noteTop, whole.width() - 2 * kGap, kLine}, Text(page.note));
}

int PagesOnPaper::Count(const QPageLayout& layout) {
  QImage unseen(1, 1, QImage::Format_Grayscale8);
  size_ = layout.paintRect(QPageLayout::Point).size();
  wanted_ = {0, -1};
  if (!painter_.begin(&unseen)) return 0;
  PaintAll();
  painter_.end();
  return sheet_;
}

bool PagesOnPaper::Paint(QPagedPaintDevice& device, Sheets wanted) {
  device_ = &device;
  wanted_ = wanted;
  size_ = device.pageLayout().paintRect(QPageLayout::Point).size();
  if (!painter_.begin(&device)) return false;
  painter_.scale(device.logicalDpiX() / kPointsPerInch, device.logicalDpiY() / kPointsPerInch);
  PaintAll();
  return painter_.end();
}

bool PagesOnPaper::IsWanted() const {
  return sheet_ >= wanted_.first && (wanted_.last == 0 || sheet_ <= wanted_.last);
}

void PagesOnPaper::PaintAll() {
  sheet_ = 0;
  for (const Page& page : pages_) PaintPage(page);
}

void PagesOnPaper::BeginSheet() {
  ++sheet_;
  if (IsWanted() && sheet_ > wanted_.first) device_->newPage();
  painter_.setClipping(!IsWanted());
  if (!IsWanted()) painter_.setClipRect(QRectF());
  painter_.setPen(Qt::black);
  painter_.setFont(FontOf(kTextSize));
  DrawLine(painter_, {0, 0, size_.width() - 4 * kLine, kLine}, heading_);
  DrawLine(painter_, {0, 0, size_.width(), kLine}, QString::number(sheet_), Qt::AlignRight);
  top_ = 2 * kLine;
}

void PagesOnPaper::PaintPage(const Page& page) {
  BeginSheet();
  painter_.setFont(FontOf(kTitleSize, true));
  DrawLine(painter_, {0, top_, size_.width(), kTitleLine}, Text(page.title));
  top_ += kTitleLine + kGap;
  painter_.setFont(FontOf(kTextSize));
  const double height = size_.height() * kPartOfChart;
  PaintChart(painter_, {0, top_, size_.width(), height}, page.chart, ChartColors::OnPaper());
  top_ += height + kGap;
  painter_.setPen(Qt::black);
  DrawLine(painter_, {0, top_, size_.width(), kLine}, Text(page.note));
  top_ += kLine + kGap;
  PaintTable(page.table);
}

void PagesOnPaper::PaintTable(const Table& table) {
  const std::vector<double> widths = ColumnWidths(table, size_.width());
  const auto headings = [&] {
    painter_.setFont(FontOf(kTextSize, true));
    PaintRow(widths, Headings(table));
    painter_.setFont(FontOf(kTextSize));
  };
  headings();
  for (const auto& row : table.rows) {
    if (top_ + kLine > size_.height()) {
      BeginSheet();
      headings();
    }
    PaintRow(widths, row);
  }
}

void PagesOnPaper::PaintRow(const std::vector<double>& widths, const std::vector<Value>& cells) {
  double left = 0;
  for (std::size_t column = 0; column < cells.size(); ++column) {
    const bool toTheRight = column > 0;
    DrawLine(painter_, {left + kGap / 2, top_, widths[column] - kGap, kLine}, ValueText(cells[column]),
             toTheRight ? Qt::AlignRight : Qt::AlignLeft);
    left += widths[column];
  }
  top_ += kLine;
}

}  // namespace varnlog::charts
