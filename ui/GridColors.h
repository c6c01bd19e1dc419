#pragma once

#include <cstdint>

#include <QColor>
#include <QPalette>

#include "ui/RowBuffer.h"

namespace varnlog::ui {

/// The colours of a cell, one set per state. An invalid colour stands for the grid's own.
struct GridColors {
  QColor lockedBack;
  QColor lockedFore = QColor(0, 0, 0);
  QColor editFore = QColor(0, 0, 255);
  QColor editBack = QColor(255, 255, 255);
  QColor noneEditBack = QColor(255, 255, 0);

  /// With the system's colour for locked cells.
  [[nodiscard]] static GridColors Default();
  /// These colours on a desktop of `palette`: on a dark one, what is still as in Default() gives way to its
  /// dark counterpart, because a page of white and yellow cells would dazzle there. What was configured
  /// stays.
  [[nodiscard]] GridColors On(const QPalette& palette) const;
};

struct ColorPair {
  QColor fore;
  QColor back;
};

/// A colour stored as 0x00BBGGRR, or as 0x80000000 plus the number of a system colour.
[[nodiscard]] QColor ColorFromStored(std::uint32_t stored);

/// 1 (the same) to 21 (black on white), as the eye sees it.
[[nodiscard]] double Contrast(const QColor& a, const QColor& b);

/// `fore` where it can be read on `back`, else black or white, whichever stands out more.
[[nodiscard]] QColor ReadableOn(const QColor& back, const QColor& fore);

/// Text and background of an unselected cell; whatever was configured, the text can be read.
[[nodiscard]] ColorPair ColorsOf(CellState state, const GridColors& colors, const QPalette& palette);

}  // namespace varnlog::ui
