#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include <QTableView>
#include <QTimer>

#include "ui/CellDelegate.h"
#include "ui/GridColors.h"
#include "ui/TDBGridEvents.h"
#include "ui/TDBGridModel.h"

namespace varnlog::ui {

/// A data grid that holds no data of its own: it knows how many rows there are and asks its TDBGridEvents for
/// the block of rows that is to be painted. Nothing in it walks all rows, so a million cost what a screenful
/// costs.
///
/// Keys: arrows, Page Up and Down, Home and End (with Ctrl: first and last row); F2 or typing edits, Escape
/// gives the edit up; Tab and Shift+Tab go to the next and previous open cell that is empty; Ctrl+Return
/// confirms the value of an open cell; Alt+Down or F4 opens the list;
/// Alt+Up clicks the heading of the current column; Ctrl+C copies the selected cells; Ctrl+Z is left to the
/// events.
class TDBGrid final : public QTableView {
  Q_OBJECT
 public:
  static constexpr int kNarrowest = 16;
  static constexpr int kWidest = 4000;
  /// Rows copied before other events get their turn.
  static constexpr int kRowsPerCopySlice = 1'000;
  /// Rows looked at for an open cell before other events get their turn.
  static constexpr int kRowsPerSearchSlice = 256;

  explicit TDBGrid(QWidget* parent = nullptr);
  ~TDBGrid() override;

  /// Not owned; must outlive the grid or be replaced by nullptr. Set before rows are bound.
  void SetEvents(TDBGridEvents* events);

  /// Removes the existing columns. Forgets the sort indicator.
  void SetColumns(std::vector<GridColumn> columns);
  [[nodiscard]] int ColumnCount() const { return model_.columnCount(); }
  /// Characters, not bytes; nothing: no limit.
  void SetMaxLength(int column, std::optional<int> characters);
  /// Device-independent pixels; kept between kNarrowest and kWidest. The last column is shown wider where
  /// there is room.
  void SetColumnWidth(int column, int width);
  /// A column that is not shown is skipped by keys and by copying, and keeps its width.
  void SetColumnShown(int column, bool shown);
  [[nodiscard]] int ColumnWidth(int column) const;
  /// Nothing: no heading is marked.
  void SetSortIndicator(std::optional<int> column, Qt::SortOrder order = Qt::AscendingOrder);
  /// What the indicator means, for screen readers.
  void SetSortTexts(const QString& ascending, const QString& descending);
  /// What the indicator says of `column`; "" when another column is marked or none.
  [[nodiscard]] QString SortText(int column) const;

  void SetColors(const GridColors& colors);
  /// What a state means, for the tooltip and for screen readers.
  void SetStateText(CellState state, const QString& text);
  /// What the mark of a new row means, likewise.
  void SetNewText(const QString& text) { model_.SetNewText(text); }
  /// Shown in place of rows when there are none.
  void SetEmptyText(const QString& text);
  [[nodiscard]] const QString& EmptyText() const { return emptyText_; }
  /// False: no cell can be edited and all look so, Tab visits every cell.
  void SetAllowUpdate(bool allow);

  /// Shows `count` other rows from the first one on.
  void ReBind(std::int64_t count);
  /// Rows are added or taken away at the end; the rows shown, the current cell and the selection stay. May be
  /// called from within UnboundReadDataEx.
  void SetApproximateCount(std::int64_t count);
  [[nodiscard]] std::int64_t ApproximateCount() const { return model_.rowCount(); }
  /// Reads the rows shown anew, in place.
  void Refresh() { model_.Refresh(); }
  void RefetchRow(int row) { model_.RefetchRow(row); }

  /// -1 when there is no current cell.
  [[nodiscard]] int Row() const { return currentIndex().row(); }
  [[nodiscard]] int Col() const { return currentIndex().column(); }
  /// Selects the cell alone and brings it into view.
  void SetCurrentCell(int row, int column);
  [[nodiscard]] QString CellText(int row, int column) const { return model_.CellAt(row, column).text; }
  [[nodiscard]] CellState StateOf(int row, int column) const { return model_.CellAt(row, column).state; }
  [[nodiscard]] std::optional<std::int64_t> BookmarkOf(int row) const { return model_.BookmarkAt(row); }

  /// Enters the value of the current cell as it stands, which is an entry like any other. False when the cell
  /// is empty, not open, or was entered before.
  bool ConfirmValue();

  /// Leaves the cell editor or closes the open list without storing. Within BeforeColEdit and ButtonClick it
  /// keeps them from opening.
  void CancelEdit();
  [[nodiscard]] bool IsEditing() const { return state() == EditingState; }
  /// Stores what stands in an open editor and closes it. False when it was refused and the editor keeps it.
  bool CommitEdit();

  /// Text of the failure that Error() is about.
  [[nodiscard]] const QString& ErrorText() const { return errorText_; }

  /// The selected cells, tabs between columns and a line a row; null when CopyProgress() gave it up.
  enum class Copied { kCells, kWithHeadings };
  [[nodiscard]] QString SelectionText(Copied copied = Copied::kCells);
  void CopySelection(Copied copied = Copied::kCells);

  [[nodiscard]] const TDBGridModel& Model() const { return model_; }
  [[nodiscard]] const CellDelegate& Delegate() const { return delegate_; }
  /// As if the heading had been clicked.
  void ClickHeading(int column);

  // Every cell would be looked at.
  void keyboardSearch(const QString& /*search*/) override {}

 protected:
  bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
  void commitData(QWidget* editor) override;
  void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void changeEvent(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

 private:
  enum class Direction { kForward, kBackward };

  void SetUpHeaders();
  void FitRowHeight();
  /// The columns keep the number of characters that they have room for.
  void FitColumnWidths();
  /// The last column takes what the others leave.
  void FillWidth();

  [[nodiscard]] bool MayEdit(const QModelIndex& index, EditTrigger trigger, const QEvent* event);
  bool OpenEditor(const QModelIndex& index, EditTrigger trigger, QEvent* event);
  /// The open editor, or nullptr.
  [[nodiscard]] QWidget* Editor() const { return IsEditing() ? indexWidget(editedCell_) : nullptr; }
  void ReturnToEditor();
  [[nodiscard]] bool OnButton(const QPoint& position) const;
  void PressButton(const QModelIndex& index);
  void RaiseError(const DataFailure& failure);
  void TellError();

  bool HandleKey(QKeyEvent* event);
  void MoveToOpenCell(Direction direction);
  [[nodiscard]] bool StepSearch();
  [[nodiscard]] bool SearchRow(int row);
  void StopSearch() { searchTimer_.stop(); }

  TDBGridModel model_;
  CellDelegate delegate_;
  TDBGridEvents* events_ = nullptr;

  int digitWidth_ = 0;               // of the font that the columns are as wide for
  int lastWidth_ = 0;                // of the last column, when there is nothing left to take
  bool filling_ = false;             // the widths change by themselves
  std::map<int, int> hiddenWidths_;  // of columns that are not shown

  std::optional<int> sortColumn_;
  Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
  QString ascendingText_;
  QString descendingText_;

  bool cancelRequested_ = false;
  bool openingList_ = false;
  QPersistentModelIndex pressedButton_;  // while the mouse is held down on it
  QPersistentModelIndex editedCell_;     // whose editor was opened last
  bool keepsEditor_ = false;             // what was typed last was refused and stays in its editor
  bool isTelling_ = false;               // a message is up: losing the focus to it commits nothing
  QString emptyText_;

  std::optional<DataFailure> failure_;  // not told yet
  QString errorText_;
  std::optional<std::int64_t> countToBe_;  // asked for while a block was being read

  struct Search {
    Direction direction = Direction::kForward;
    int row = 0;
    int column = 0;  // the next one to look at
  };
  Search search_;
  QTimer searchTimer_;
};

}  // namespace varnlog::ui
