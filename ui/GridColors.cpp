#include "ui/GridColors.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace varnlog::ui {

namespace {

constexpr std::uint32_t kSystemColor = 0x80000000U;
// Below this, thin strokes on a low-contrast screen are lost.
constexpr double kReadable = 3.0;
// Two backgrounds nearer than this look the same.
constexpr double kDistinct = 1.25;

// The classic scheme, by number, for colours that an INI file names by their system reference.
constexpr std::array<QRgb, 25> kSystemColors = {0xFFD4D0C8, 0xFF3A6EA5, 0xFF0A246A, 0xFF808080, 0xFFD4D0C8,
                                                0xFFFFFFFF, 0xFF000000, 0xFF000000, 0xFF000000, 0xFFFFFFFF,
                                                0xFFD4D0C8, 0xFFD4D0C8, 0xFF808080, 0xFF0A246A, 0xFFFFFFFF,
                                                0xFFD4D0C8, 0xFF808080, 0xFF808080, 0xFF000000, 0xFFD4D0C8,
                                                0xFFFFFFFF, 0xFF404040, 0xFFD4D0C8, 0xFF000000, 0xFFFFFFE1};

double Linear(double channel) {
  return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double Luminance(const QColor& color) {
  return 0.2126 * Linear(color.redF()) + 0.7152 * Linear(color.greenF()) + 0.0722 * Linear(color.blueF());
}

ColorPair Chosen(CellState state, const GridColors& colors) {
  switch (state) {
    case CellState::kEdit:
    case CellState::kPending:
      return {colors.editFore, colors.editBack};
    case CellState::kLocked:
      return {colors.lockedFore, colors.lockedBack};
    case CellState::kNoneEdit:
      return {QColor(), colors.noneEditBack};
    case CellState::kPlain:
      break;
  }
  return {};
}

}  // namespace

GridColors GridColors::Default() {
  GridColors colors;
  colors.lockedBack = ColorFromStored(kSystemColor | 19U);
  return colors;
}

GridColors GridColors::On(const QPalette& palette) const {
  if (palette.color(QPalette::Base).lightness() >= palette.color(QPalette::Text).lightness()) return *this;
  static const GridColors kLight = Default();
  GridColors dark = *this;
  if (dark.lockedBack == kLight.lockedBack && dark.lockedFore == kLight.lockedFore) {
    const QColor base = palette.color(QPalette::Base);
    dark.lockedBack = QColor(0x3d, 0x3d, 0x42);
    if (Contrast(dark.lockedBack, base) < kDistinct) dark.lockedBack = base.lighter(160);
    dark.lockedFore = QColor(0xd4, 0xd4, 0xd4);
  }
  if (dark.editBack == kLight.editBack && dark.editFore == kLight.editFore) {
    dark.editBack = QColor();
    dark.editFore = QColor(0x82, 0xb4, 0xff);
  }
  if (dark.noneEditBack == kLight.noneEditBack) dark.noneEditBack = QColor(0x66, 0x5c, 0x00);
  return dark;
}

QColor ColorFromStored(std::uint32_t stored) {
  if ((stored & kSystemColor) != 0) {
    const std::uint32_t number = stored & ~kSystemColor;
    return number < kSystemColors.size() ? QColor(kSystemColors.at(number)) : QColor();
  }
  return {static_cast<int>(stored & 0xFFU), static_cast<int>((stored >> 8U) & 0xFFU),
          static_cast<int>((stored >> 16U) & 0xFFU)};
}

double Contrast(const QColor& a, const QColor& b) {
  const auto [darker, lighter] = std::minmax({Luminance(a), Luminance(b)});
  return (lighter + 0.05) / (darker + 0.05);
}

QColor ReadableOn(const QColor& back, const QColor& fore) {
  if (fore.isValid() && Contrast(back, fore) >= kReadable) return fore;
  const QColor black(Qt::black);
  const QColor white(Qt::white);
  return Contrast(back, black) >= Contrast(back, white) ? black : white;
}

ColorPair ColorsOf(CellState state, const GridColors& colors, const QPalette& palette) {
  ColorPair pair = Chosen(state, colors.On(palette));
  if (!pair.back.isValid()) pair.back = palette.color(QPalette::Base);
  if (!pair.fore.isValid()) pair.fore = palette.color(QPalette::Text);
  pair.fore = ReadableOn(pair.back, pair.fore);
  return pair;
}

}  // namespace varnlog::ui
