#pragma once

#include <string_view>

#include "report/QrCode.h"

namespace varnlog::report {

/// The widths of texts. All lengths are points.
class TextMetrics {
 public:
  virtual ~TextMetrics() = default;
  /// `font` is an index into the design's fonts.
  [[nodiscard]] virtual double Width(std::string_view text, int font) const = 0;
  /// Whether the text is read from right to left: what its first letter says.
  [[nodiscard]] virtual bool IsRightToLeft(std::string_view text) const = 0;
};

/// A page to draw on. The origin is the upper left corner of the area inside the margins.
class ReportCanvas {
 public:
  virtual ~ReportCanvas() = default;
  /// One line of text from its left edge on, wherever its first letter stands.
  virtual void DrawText(double left, double baseline, std::string_view text, int font, bool rightToLeft) = 0;
  /// A horizontal or vertical rule whose middle lies between the two points.
  virtual void DrawRule(double x1, double y1, double x2, double y2, double thickness) = 0;
  /// A square whose sides are `side` long.
  virtual void DrawSymbol(double left, double top, double side, const QrCode& symbol) = 0;
};

}  // namespace varnlog::report
