#include "charts/ChartFile.h"

#include <array>
#include <utility>

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgGenerator>

#include "charts/PagePainter.h"
#include "platform/Ascii.h"

namespace varnlog::charts {

namespace {

constexpr std::array<std::pair<std::string_view, ChartFormat>, 4> kEndings = {{{".pdf", ChartFormat::kPdf},
                                                                               {".png", ChartFormat::kPng},
                                                                               {".svg", ChartFormat::kSvg},
                                                                               {".csv", ChartFormat::kCsv}}};

constexpr int kDotsPerPoint = 2;  // of a picture made of dots
constexpr int kDpi = 72;

}  // namespace

std::optional<ChartFormat> ChartFormatOf(std::string_view file) {
  for (const auto& [ending, format] : kEndings) {
    if (file.size() < ending.size()) continue;
    if (platform::ascii::SameLetters(file.substr(file.size() - ending.size()), ending)) return format;
  }
  return std::nullopt;
}

QByteArray PdfOf(std::span<const Page> pages, const std::string& heading, const QPageLayout& layout) {
  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  bool drawn = false;
  {
    QPdfWriter writer(&buffer);
    writer.setPageLayout(layout);
    writer.setTitle(QString::fromStdString(heading));
    drawn = PagesOnPaper(pages, QString::fromStdString(heading)).Paint(writer);
  }
  return drawn ? buffer.data() : QByteArray();
}

QByteArray PngOf(const Page& page) {
  QImage image((kFigure * kDotsPerPoint).toSize(), QImage::Format_RGB32);
  {
    QPainter painter(&image);
    painter.scale(kDotsPerPoint, kDotsPerPoint);
    PaintFigure(painter, page);
  }
  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  return image.save(&buffer, "PNG") ? buffer.data() : QByteArray();
}

QByteArray SvgOf(const Page& page) {
  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  QSvgGenerator generator;
  generator.setOutputDevice(&buffer);
  generator.setResolution(kDpi);
  generator.setSize(kFigure.toSize());
  generator.setViewBox(QRectF(QPointF(0, 0), kFigure));
  generator.setTitle(QString::fromStdString(page.title));
  QPainter painter;
  if (!painter.begin(&generator)) return {};
  PaintFigure(painter, page);
  return painter.end() ? buffer.data() : QByteArray();
}

}  // namespace varnlog::charts
