#include "ui/CellDelegate.h"

#include <algorithm>
#include <cmath>
#include <exception>

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

#include "ui/CellEditors.h"
#include "ui/SuggestingEdit.h"

namespace varnlog::ui {

namespace {

constexpr int kTextMargin = 4;
constexpr int kEditorMargin = 3;
constexpr int kLeastMark = 4;
constexpr const char* kLoaded = "loaded";

void DrawButton(QPainter& painter, const QRect& button, const QPalette& palette) {
  painter.fillRect(button, palette.color(QPalette::Button));
  painter.setPen(palette.color(QPalette::Light));
  painter.drawLine(button.topLeft(), button.topRight());
  painter.drawLine(button.topLeft(), button.bottomLeft());
  painter.setPen(palette.color(QPalette::Dark));
  painter.drawLine(button.bottomLeft(), button.bottomRight());
  painter.drawLine(button.topRight(), button.bottomRight());
  painter.setPen(Qt::NoPen);
  painter.setBrush(palette.color(QPalette::ButtonText));
  painter.drawPolygon(ButtonArrow(button));
}

// In the corner in which no text begins and no button stands.
void DrawMark(QPainter& painter, const QRect& cell, const QColor& back) {
  static const QColor kMark(0xb0, 0x48, 0x00);
  const int size = std::max(kLeastMark, cell.height() * 3 / 10);
  painter.setPen(Qt::NoPen);
  painter.setBrush(ReadableOn(back, kMark));
  painter.drawPolygon(
      QPolygon({cell.topLeft(), cell.topLeft() + QPoint(size, 0), cell.topLeft() + QPoint(0, size)}));
}

// A bar at the beginning of the row, whose number is bold as well.
void DrawNewRow(QPainter& painter, const QRect& cell, const QColor& back) {
  static const QColor kNew(0x1b, 0x7a, 0x4b);
  painter.fillRect(QRect(cell.topLeft(), QSize(kTextMargin - 1, cell.height())), ReadableOn(back, kNew));
}

QFont FontOf(const QStyleOptionViewItem& option, bool isNew) {
  QFont font = option.font;
  if (isNew) font.setBold(true);
  return font;
}

void DrawFocus(QPainter& painter, const QStyleOptionViewItem& option, const QColor& color) {
  if (!option.state.testFlag(QStyle::State_HasFocus)) return;
  painter.setPen(QPen(color, 1, Qt::DotLine));
  painter.setBrush(Qt::NoBrush);
  painter.drawRect(option.rect.adjusted(0, 0, -1, -1));
}

ColorPair SelectedColors(const QStyleOptionViewItem& option) {
  const auto group = option.state.testFlag(QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
  return {option.palette.color(group, QPalette::HighlightedText),
          option.palette.color(group, QPalette::Highlight)};
}

}  // namespace

QRect ButtonRect(const QRect& cell) {
  const int size = std::min(cell.height(), cell.width());
  return {cell.x() + cell.width() - size, cell.y(), size, size};
}

QPolygon ButtonArrow(const QRect& button) {
  const double size = button.width();
  const double right = button.x() + size;
  const double top = button.y();
  const auto pixel = [](double x, double y) {
    return QPoint(static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)));
  };
  return QPolygon({pixel(right - 3 * size / 4, top + 3 * size / 8),
                   pixel(right - size / 2, top + 5 * size / 8), pixel(right - size / 4, top + 3 * size / 8)});
}

struct CellDelegate::Look {
  TDBGridModel::Cell cell;
  bool button;
};

CellDelegate::CellDelegate(TDBGridModel& model, QObject* parent)
    : QStyledItemDelegate(parent), model_(model) {}

void CellDelegate::SetColors(const GridColors& colors) {
  colors_ = colors;
  pairs_.reset();
}

ColorPair CellDelegate::Colors(CellState state, const QPalette& palette) const {
  if (!pairs_) {
    pairs_.emplace();
    for (std::size_t i = 0; i < pairs_->size(); ++i) {
      pairs_->at(i) = ColorsOf(static_cast<CellState>(i), colors_, palette);
    }
  }
  return pairs_->at(static_cast<std::size_t>(state));
}

bool CellDelegate::HasButton(int row, int column) const {
  return model_.AllowUpdate() && !model_.Column(column).list.isEmpty() &&
         model_.BookmarkAt(row).has_value() && model_.CellAt(row, column).state != CellState::kNoneEdit;
}

QRect CellDelegate::TextRect(const QRect& cell, bool button) const {
  return cell.adjusted(kTextMargin, 0, -kTextMargin - (button ? ButtonRect(cell).width() : 0), 0);
}

void CellDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
  const GridColumn& column = model_.Column(index.column());
  Look look{model_.CellAt(index.row(), index.column()), HasButton(index.row(), index.column())};
  painter->save();
  if (!column.ownerDraw || !RaiseOwnerDraw(*painter, option, index, look)) {
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    const ColorPair colors = selected ? SelectedColors(option) : Colors(look.cell.state, option.palette);
    painter->fillRect(option.rect, colors.back);
    const QRect textRect = TextRect(option.rect, look.button);
    painter->setPen(colors.fore);
    painter->setFont(FontOf(option, look.cell.isNew));
    painter->drawText(
        textRect, static_cast<int>((column.alignment | Qt::AlignVCenter).toInt()) | Qt::TextSingleLine,
        option.fontMetrics.elidedText(look.cell.text, Qt::ElideRight, textRect.width(), Qt::TextSingleLine));
    if (look.cell.isNew) DrawNewRow(*painter, option.rect, colors.back);
    if (look.cell.isMarked) DrawMark(*painter, option.rect, colors.back);
    if (look.button) DrawButton(*painter, ButtonRect(option.rect), option.palette);
    DrawFocus(*painter, option, colors.fore);
  }
  painter->restore();
}

bool CellDelegate::RaiseOwnerDraw(QPainter& painter, const QStyleOptionViewItem& option,
                                  const QModelIndex& index, Look& look) const {
  if (model_.Events() == nullptr) return false;
  OwnerDrawnCell cell{.painter = painter,
                      .rect = option.rect,
                      .row = index.row(),
                      .column = index.column(),
                      .text = look.cell.text,
                      .state = look.cell.state,
                      .drawButton = look.button};
  try {
    model_.Events()->OwnerDrawCell(cell);
  } catch (const std::exception& e) {
    emit model_.Failed({0, QStringLiteral("ERROR OWNERDRAW: ") + QString::fromUtf8(e.what())});
    return false;
  }
  look.cell.text = cell.text;
  look.button = cell.drawButton;
  return cell.painted;
}

QWidget* CellDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                                    const QModelIndex& index) const {
  const GridColumn& column = model_.Column(index.column());
  auto* self = const_cast<CellDelegate*>(this);  // the signals of the base class are not const
  if (column.list.isEmpty()) {
    QLineEdit* editor =
        column.suggestions ? new SuggestingEdit(column.suggestions(), parent) : new QLineEdit(parent);
    // An open cell that is empty would look as before but for the cursor.
    editor->setStyleSheet(QStringLiteral("QLineEdit { border: 1px solid palette(highlight); padding: 0; }"));
    // Where the text stood before: a line edit has a border and a small margin of its own.
    editor->setTextMargins(kTextMargin - kEditorMargin, 0, kTextMargin - kEditorMargin, 0);
    editor->setAlignment(column.alignment | Qt::AlignVCenter);
    editor->setValidator(new LengthLimit(column.maxLength, editor));
    editor->setAccessibleName(column.heading);
    return editor;
  }
  auto* editor = new ListEditor(parent);
  editor->addItems(column.list);
  editor->setAccessibleName(column.heading);
  editor->view()->setAccessibleName(column.heading);
  connect(editor, &ListEditor::Chosen, self, [self, editor] {
    emit self->commitData(editor);
    emit self->closeEditor(editor);
  });
  connect(editor, &ListEditor::Dismissed, self,
          [self, editor] { emit self->closeEditor(editor, RevertModelCache); });
  return editor;
}

void CellDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                        const QModelIndex& /*index*/) const {
  editor->setGeometry(option.rect);
}

void CellDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
  // Called again whenever the rows are read anew; what the user has begun to type stays.
  if (editor->property(kLoaded).toBool()) return;
  editor->setProperty(kLoaded, true);
  const QString text = model_.CellAt(index.row(), index.column()).text;
  if (auto* list = qobject_cast<ListEditor*>(editor)) {
    list->setCurrentIndex(list->findText(text, Qt::MatchFixedString | Qt::MatchCaseSensitive));
  } else if (auto* line = qobject_cast<QLineEdit*>(editor)) {
    line->setText(text);
  }
}

void CellDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const {
  if (const auto* list = qobject_cast<ListEditor*>(editor)) {
    if (list->currentIndex() >= 0) model->setData(index, list->currentText(), Qt::EditRole);
  } else if (const auto* line = qobject_cast<QLineEdit*>(editor)) {
    model->setData(index, line->text(), Qt::EditRole);
  }
}

bool CellDelegate::eventFilter(QObject* object, QEvent* event) {
  // On some systems a line edit takes Ctrl+U and Ctrl+D for erasing before they can be commands.
  if (event->type() == QEvent::ShortcutOverride) {
    const auto& key = *static_cast<QKeyEvent*>(event);
    const bool erases = key.matches(QKeySequence::DeleteCompleteLine) || key.matches(QKeySequence::Delete);
    if (erases && key.modifiers().testFlag(Qt::ControlModifier)) {
      event->ignore();
      return true;
    }
  }
  return QStyledItemDelegate::eventFilter(object, event);
}

QString CellDelegate::ToolTip(const QStyleOptionViewItem& option, const QModelIndex& index) const {
  const TDBGridModel::Cell cell = model_.CellAt(index.row(), index.column());
  const QRect textRect = TextRect(option.rect, HasButton(index.row(), index.column()));
  QStringList lines;
  if (option.fontMetrics.horizontalAdvance(cell.text) > textRect.width()) lines << cell.text;
  lines << model_.TipText(index.row(), index.column()) << model_.StateText(index.row(), index.column())
        << model_.NoteText(index.row(), index.column());
  lines.removeAll(QString());
  return lines.join('\n');
}

bool CellDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                             const QModelIndex& index) {
  if (event == nullptr || view == nullptr || event->type() != QEvent::ToolTip || !index.isValid()) {
    return QStyledItemDelegate::helpEvent(event, view, option, index);
  }
  // Names may hold what looks like markup.
  const QString text = ToolTip(option, index);
  const QString shown = text.toHtmlEscaped().replace('\n', "<br>");
  QToolTip::showText(event->globalPos(), text.isEmpty() ? text : "<qt>" + shown + "</qt>", view->viewport(),
                     option.rect);
  return true;
}

}  // namespace varnlog::ui
