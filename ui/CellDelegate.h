#pragma once

#include <array>
#include <optional>

#include <QPolygon>
#include <QStyledItemDelegate>

#include "ui/GridColors.h"
#include "ui/TDBGridModel.h"

namespace varnlog::ui {

/// The drop-down button of a cell: the square at its right edge, as high as the cell unless that is wider.
[[nodiscard]] QRect ButtonRect(const QRect& cell);
/// The triangle on the button: (right - 3s/4, top + 3s/8), (right - s/2, top + 5s/8), (right - s/4,
/// top + 3s/8), s being the button's size, each coordinate rounded to a whole pixel.
[[nodiscard]] QPolygon ButtonArrow(const QRect& button);

/// Paints the cells and makes their editors.
class CellDelegate final : public QStyledItemDelegate {
  Q_OBJECT
 public:
  CellDelegate(TDBGridModel& model, QObject* parent);

  void SetColors(const GridColors& colors);
  /// To be called when the palette has changed.
  void ForgetPalette() { pairs_.reset(); }
  [[nodiscard]] ColorPair Colors(CellState state, const QPalette& palette) const;

  /// Whether the cell has a drop-down button.
  [[nodiscard]] bool HasButton(int row, int column) const;

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const override;
  void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const override;
  void setEditorData(QWidget* editor, const QModelIndex& index) const override;
  void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
  bool eventFilter(QObject* object, QEvent* event) override;
  bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                 const QModelIndex& index) override;

  /// The text if it does not fit its cell, what the cell's state means, and what its mark says.
  [[nodiscard]] QString ToolTip(const QStyleOptionViewItem& option, const QModelIndex& index) const;

 private:
  struct Look;
  [[nodiscard]] bool RaiseOwnerDraw(QPainter& painter, const QStyleOptionViewItem& option,
                                    const QModelIndex& index, Look& look) const;
  [[nodiscard]] QRect TextRect(const QRect& cell, bool button) const;

  TDBGridModel& model_;
  GridColors colors_ = GridColors::Default();
  mutable std::optional<std::array<ColorPair, kCellStates>> pairs_;
};

}  // namespace varnlog::ui
