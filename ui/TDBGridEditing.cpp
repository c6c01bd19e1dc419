#include <utility>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>

#include "ui/CellEditors.h"
#include "ui/TDBGrid.h"
#include "ui/TDBGridAccessible.h"

namespace varnlog::ui {

namespace {

/// The character that a key press puts in, 0 for anything else.
int TypedCharacter(const QEvent* event) {
  if (event == nullptr || event->type() != QEvent::KeyPress) return 0;
  const QString text = static_cast<const QKeyEvent*>(event)->text();
  return text.isEmpty() ? 0 : static_cast<int>(text.toUcs4().front());
}

}  // namespace

bool TDBGrid::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) {
  const bool allowed = trigger == AllEditTriggers || editTriggers().testFlag(trigger);
  const bool opens = allowed && trigger != NoEditTriggers && index.isValid() && !IsEditing() &&
                     model_.flags(index).testFlag(Qt::ItemIsEditable);
  if (allowed && !model_.AllowUpdate() && trigger != SelectedClicked && index.isValid() &&
      model_.Column(index.column()).editable && events_ != nullptr) {
    events_->EditRefused();
    return true;
  }
  if (!opens || openingList_) return OpenEditor(index, trigger, event);
  // The base class waits whether a second click follows and then asks again. A locked cell that is merely
  // clicked once more, as when coming back to the window, is not worth a message.
  if (trigger == SelectedClicked) {
    return StateOf(index.row(), index.column()) != CellState::kLocked &&
           QTableView::edit(index, trigger, event);
  }
  // A refusal counts as handled, or the key would go on to search and the mouse to select.
  const QPersistentModelIndex cell(index);
  const QPointer<TDBGrid> self(this);
  const bool may = MayEdit(index, trigger, event);
  if (self.isNull() || !may || !cell.isValid()) return true;
  return OpenEditor(cell, trigger, event);
}

bool TDBGrid::OpenEditor(const QModelIndex& index, EditTrigger trigger, QEvent* event) {
  const bool wasEditing = IsEditing();
  const bool handled = QTableView::edit(index, trigger, event);
  if (!wasEditing && IsEditing()) editedCell_ = index;
  return handled;
}

bool TDBGrid::MayEdit(const QModelIndex& index, EditTrigger trigger, const QEvent* event) {
  if (!model_.BookmarkAt(index.row())) return false;  // not read (yet): nothing to correct
  if (index != currentIndex()) setCurrentIndex(index);
  if (events_ == nullptr) return true;
  const QPointer<TDBGrid> self(this);
  cancelRequested_ = false;
  bool cancel = false;
  events_->BeforeColEdit(index.column(), trigger == AnyKeyPressed ? TypedCharacter(event) : 0, cancel);
  return !self.isNull() && !cancel && !cancelRequested_;
}

bool TDBGrid::ConfirmValue() {
  const QPersistentModelIndex cell(currentIndex());
  const bool isOpen = cell.isValid() && model_.AllowUpdate() && model_.Column(cell.column()).editable &&
                      model_.Column(cell.column()).openText.isEmpty() &&
                      StateOf(cell.row(), cell.column()) == CellState::kEdit;
  if (!isOpen || CellText(cell.row(), cell.column()).isEmpty()) return false;
  const QPointer<TDBGrid> self(this);
  if (!MayEdit(cell, AllEditTriggers, nullptr) || self.isNull() || !cell.isValid()) return false;
  return model_.Enter(cell, CellText(cell.row(), cell.column()));
}

void TDBGrid::CancelEdit() {
  cancelRequested_ = true;
  if (QWidget* editor = Editor()) closeEditor(editor, QAbstractItemDelegate::RevertModelCache);
}

bool TDBGrid::CommitEdit() {
  QWidget* editor = Editor();
  if (editor == nullptr) return true;
  commitData(editor);
  if (keepsEditor_) return false;
  closeEditor(editor, QAbstractItemDelegate::NoHint);
  return true;
}

void TDBGrid::commitData(QWidget* editor) {
  if (isTelling_) return;
  keepsEditor_ = false;
  QTableView::commitData(editor);
}

// The cell whose entry was refused may have been left by a click elsewhere.
void TDBGrid::ReturnToEditor() {
  QWidget* editor = keepsEditor_ ? Editor() : nullptr;
  if (editor == nullptr) return;
  setCurrentIndex(editedCell_);
  editor->setFocus();
}

void TDBGrid::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
  if (keepsEditor_ && hint != QAbstractItemDelegate::RevertModelCache) return;
  keepsEditor_ = false;
  const bool next = hint == QAbstractItemDelegate::EditNextItem;
  const bool previous = hint == QAbstractItemDelegate::EditPreviousItem;
  if (!next && !previous) {
    QTableView::closeEditor(editor, hint);
    return;
  }
  // Going to an open cell does not open it: what is entered there is entered once.
  QTableView::closeEditor(editor, QAbstractItemDelegate::NoHint);
  MoveToOpenCell(next ? Direction::kForward : Direction::kBackward);
}

bool TDBGrid::OnButton(const QPoint& position) const {
  const QModelIndex index = indexAt(position);
  return index.isValid() && delegate_.HasButton(index.row(), index.column()) &&
         ButtonRect(visualRect(index)).contains(position);
}

void TDBGrid::PressButton(const QModelIndex& index) {
  if (index != currentIndex()) setCurrentIndex(index);
  const QPersistentModelIndex cell(index);
  const QPointer<TDBGrid> self(this);
  cancelRequested_ = false;
  if (events_ != nullptr) events_->ButtonClick(index.column());
  if (self.isNull() || cancelRequested_ || !cell.isValid()) return;
  openingList_ = true;
  edit(cell, AllEditTriggers, nullptr);
  openingList_ = false;
  if (auto* list = qobject_cast<ListEditor*>(indexWidget(cell))) list->showPopup();
}

void TDBGrid::mousePressEvent(QMouseEvent* event) {
  StopSearch();
  if (event->button() == Qt::LeftButton && OnButton(event->position().toPoint())) {
    pressedButton_ = indexAt(event->position().toPoint());
    setCurrentIndex(pressedButton_);
    return;
  }
  QTableView::mousePressEvent(event);
}

void TDBGrid::mouseMoveEvent(QMouseEvent* event) {
  // No selecting begins on a button.
  if (!pressedButton_.isValid()) QTableView::mouseMoveEvent(event);
}

void TDBGrid::mouseReleaseEvent(QMouseEvent* event) {
  const QPersistentModelIndex pressed = std::exchange(pressedButton_, {});
  if (event->button() != Qt::LeftButton || !pressed.isValid()) {
    QTableView::mouseReleaseEvent(event);
    return;
  }
  // A list that opened on the press would take the release for a click beside it and close.
  const QPoint position = event->position().toPoint();
  if (OnButton(position) && indexAt(position) == pressed) PressButton(pressed);
}

void TDBGrid::mouseDoubleClickEvent(QMouseEvent* event) {
  // The second click on a button whose list was refused is no wish to edit the cell below it.
  if (event->button() == Qt::LeftButton && OnButton(event->position().toPoint())) return;
  QTableView::mouseDoubleClickEvent(event);
}

void TDBGrid::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  // QTableView's own version names the cell to screen readers by a number that counts all cells.
  QAbstractItemView::currentChanged(current, previous);  // NOLINT(bugprone-parent-virtual-call)
  AnnounceCurrentCell(*this);
  if (events_ != nullptr) events_->RowColChange();
}

void TDBGrid::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
  // QTableView's own version lists every selected cell when a screen reader runs.
  QAbstractItemView::selectionChanged(selected, deselected);  // NOLINT(bugprone-parent-virtual-call)
  AnnounceSelection(*this);
}

}  // namespace varnlog::ui
