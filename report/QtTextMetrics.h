#pragma once

#include <array>
#include <vector>

#include <QFont>
#include <QFontMetricsF>

#include "report/ReportCanvas.h"
#include "report/ReportDesign.h"

namespace varnlog::report {

/// Fonts are made this many times larger than they are and drawn that much smaller: a device has no say in
/// the widths, so that a report breaks its lines and pages alike on paper, on the screen and in a file.
inline constexpr double kFontUnitsPerPoint = 20;

/// The fonts of a design, in its order.
[[nodiscard]] std::vector<QFont> MakeFonts(const ReportDesign& design);

/// A UTF-8 text as it is measured and drawn; accents that follow their letter are joined with it.
[[nodiscard]] QString ToDrawnText(std::string_view text);

/// Widths by Qt's fonts. Those of Latin, Greek and Cyrillic letters are remembered: nearly every text is made
/// of them alone, and without kerning the sum is exact.
class QtTextMetrics final : public TextMetrics {
 public:
  explicit QtTextMetrics(const std::vector<QFont>& fonts);

  [[nodiscard]] double Width(std::string_view text, int font) const override;
  [[nodiscard]] bool IsRightToLeft(std::string_view text) const override;

 private:
  static constexpr char32_t kRemembered = 0x0530;
  struct Font {
    QFontMetricsF metrics;
    mutable std::array<float, kRemembered> widths{};  // 0: not yet known
  };

  [[nodiscard]] static double LetterWidth(const Font& font, char32_t letter) {
    float& width = font.widths[letter];
    if (width == 0) width = static_cast<float>(font.metrics.horizontalAdvance(QChar(letter)));
    return width;
  }

  std::vector<Font> fonts_;
};

}  // namespace varnlog::report
