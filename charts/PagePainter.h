#pragma once

#include <span>

#include <QPagedPaintDevice>
#include <QPainter>
#include <QString>

#include "charts/Chart.h"

namespace varnlog::charts {

/// A number or text of a table as it is shown, in the user's locale.
[[nodiscard]] QString ValueText(const Value& value);

/// The size of a chart that stands alone, in points.
inline constexpr QSizeF kFigure(720, 420);

/// Title, chart and note, for a picture of that size. The painter counts in points.
void PaintFigure(QPainter& painter, const Page& page);

/// Which sheets are wanted, counted from 1; a last one of 0 stands for the end.
struct Sheets {
  int first = 1;
  int last = 0;
};

/// Each page on sheets of its own: title, chart, note and table, which goes on over further sheets where it
/// has to. `heading` stands at the top of each.
class PagesOnPaper {
 public:
  PagesOnPaper(std::span<const Page> pages, QString heading) : pages_(pages), heading_(std::move(heading)) {}

  [[nodiscard]] int Count(const QPageLayout& layout);
  /// False when the device could not be drawn on.
  [[nodiscard]] bool Paint(QPagedPaintDevice& device, Sheets wanted = {});

 private:
  void PaintAll();
  void PaintPage(const Page& page);
  void PaintTable(const Table& table);
  void PaintRow(const std::vector<double>& widths, const std::vector<Value>& cells);
  void BeginSheet();
  [[nodiscard]] bool IsWanted() const;

  std::span<const Page> pages_;
  QString heading_;
  QPainter painter_;
  QPagedPaintDevice* device_ = nullptr;
  QSizeF size_;  // of a sheet inside its margins, in points
  Sheets wanted_;
  int sheet_ = 0;
  double top_ = 0;  // what is drawn next begins here
};

}  // namespace varnlog::charts
