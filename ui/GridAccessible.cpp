#include "ui/GridAccessible.h"

#include <algorithm>
#include <limits>

#include <QHeaderView>

#include "ui/GridCellAccessible.h"

namespace varnlog::ui {

namespace {

std::int64_t KeyOf(int row, int column) {
  return (static_cast<std::int64_t>(row) << 16) + column;
}
int RowOf(std::int64_t key) {
  return static_cast<int>(key >> 16);
}

int AsInt(std::int64_t number) {
  return static_cast<int>(std::min<std::int64_t>(number, std::numeric_limits<int>::max()));
}

QItemSelection SelectionOf(const TDBGrid& grid) {
  return grid.selectionModel()->selection();
}

/// Calls `visit` with the ranges that reach over all columns.
template <typename Visit>
void ForWholeRows(const TDBGrid& grid, Visit visit) {
  for (const QItemSelectionRange& range : SelectionOf(grid)) {
    if (range.width() == grid.ColumnCount()) visit(range);
  }
}

}  // namespace

GridAccessible::GridAccessible(TDBGrid* grid) : QAccessibleWidget(grid, QAccessible::Table) {}

GridAccessible::~GridAccessible() {
  DropAll();
}

TDBGrid* GridAccessible::Grid() const {
  return static_cast<TDBGrid*>(widget());
}

void* GridAccessible::interface_cast(QAccessible::InterfaceType type) {
  if (type == QAccessible::TableInterface) return static_cast<QAccessibleTableInterface*>(this);
  return QAccessibleWidget::interface_cast(type);
}

GridAccessible::Window GridAccessible::OnScreen() const {
  const int rows = rowCount();
  const int first = Grid()->rowAt(0);
  if (rows == 0 || first < 0) return {0, 0};
  const int last = Grid()->rowAt(Grid()->viewport()->height() - 1);
  return {first, (last < 0 ? rows - 1 : last) - first + 1};
}

int GridAccessible::childCount() const {
  return columnCount() * (1 + OnScreen().rows);
}

QAccessibleInterface* GridAccessible::child(int index) const {
  const int columns = columnCount();
  if (index < 0 || index >= childCount()) return nullptr;
  if (index < columns) return Heading(index);
  const int cell = index - columns;
  return cellAt(OnScreen().firstRow + cell / columns, cell % columns);
}

int GridAccessible::indexOfChild(const QAccessibleInterface* child) const {
  const auto* part = dynamic_cast<const GridPartAccessible*>(child);
  if (part == nullptr || part->parent() != this) return -1;
  if (part->row() == kHeadingRow) return part->column();
  const Window window = OnScreen();
  const int row = part->row() - window.firstRow;
  return row < 0 || row >= window.rows ? -1 : columnCount() * (1 + row) + part->column();
}

QAccessibleInterface* GridAccessible::childAt(int x, int y) const {
  const QPoint onScreen(x, y);
  QHeaderView* header = Grid()->horizontalHeader();
  const QPoint inHeader = header->viewport()->mapFromGlobal(onScreen);
  if (header->viewport()->rect().contains(inHeader)) return Heading(header->logicalIndexAt(inHeader));
  const QModelIndex index = Grid()->indexAt(Grid()->viewport()->mapFromGlobal(onScreen));
  return index.isValid() ? cellAt(index.row(), index.column()) : nullptr;
}

QAccessibleInterface* GridAccessible::focusChild() const {
  return Grid()->hasFocus() ? cellAt(Grid()->Row(), Grid()->Col()) : QAccessibleWidget::focusChild();
}

QAccessibleInterface* GridAccessible::Heading(int column) const {
  return column < 0 || column >= columnCount() ? nullptr : Object(kHeadingRow, column);
}

QAccessibleInterface* GridAccessible::cellAt(int row, int column) const {
  if (row < 0 || row >= rowCount() || column < 0 || column >= columnCount()) return nullptr;
  return Object(row, column);
}

QAccessibleInterface* GridAccessible::Object(int row, int column) const {
  const std::int64_t key = KeyOf(row, column);
  if (const auto found = objects_.constFind(key); found != objects_.constEnd()) {
    return QAccessible::accessibleInterface(*found);
  }
  if (objects_.size() >= kMostCellsKept) DropOffScreen();
  QAccessibleInterface* object = nullptr;
  if (row == kHeadingRow) {
    object = new GridHeadingAccessible(Grid(), column);
  } else {
    object = new GridCellAccessible(Grid(), row, column);
  }
  // From here on Qt's cache owns the object.
  objects_.insert(key, QAccessible::registerAccessibleInterface(object));
  return object;
}

void GridAccessible::DropAll() const {
  for (const QAccessible::Id id : std::as_const(objects_)) QAccessible::deleteAccessibleInterface(id);
  objects_.clear();
}

void GridAccessible::DropOffScreen() const {
  const Window window = OnScreen();
  objects_.removeIf([&window](const auto object) {
    const int row = RowOf(object.key());
    const bool keep = row == kHeadingRow || (row >= window.firstRow && row < window.firstRow + window.rows);
    if (!keep) QAccessible::deleteAccessibleInterface(object.value());
    return !keep;
  });
}

void GridAccessible::modelChange(QAccessibleTableModelChangeEvent* event) {
  // Rows only ever come and go at the end, so cells keep their place unless all is new.
  if (event->modelChangeType() == QAccessibleTableModelChangeEvent::ModelReset) DropAll();
}

int GridAccessible::columnCount() const {
  return Grid()->ColumnCount();
}
int GridAccessible::rowCount() const {
  return static_cast<int>(Grid()->ApproximateCount());
}

QString GridAccessible::columnDescription(int column) const {
  QAccessibleInterface* heading = Heading(column);
  return heading == nullptr ? QString() : heading->text(QAccessible::Name);
}

QString GridAccessible::rowDescription(int row) const {
  return row < 0 || row >= rowCount() || columnCount() == 0 ? QString() : Grid()->CellText(row, 0);
}

int GridAccessible::selectedCellCount() const {
  std::int64_t count = 0;
  for (const QItemSelectionRange& range : SelectionOf(*Grid())) {
    count += static_cast<std::int64_t>(range.width()) * range.height();
  }
  return AsInt(count);
}

QList<QAccessibleInterface*> GridAccessible::selectedCells() const {
  QList<QAccessibleInterface*> cells;
  for (const QItemSelectionRange& range : SelectionOf(*Grid())) {
    for (int row = range.top(); row <= range.bottom(); ++row) {
      for (int column = range.left(); column <= range.right(); ++column) {
        if (cells.size() >= kMostListed) return cells;
        cells << cellAt(row, column);
      }
    }
  }
  return cells;
}

int GridAccessible::selectedRowCount() const {
  std::int64_t count = 0;
  ForWholeRows(*Grid(), [&count](const QItemSelectionRange& range) { count += range.height(); });
  return AsInt(count);
}

QList<int> GridAccessible::selectedRows() const {
  QList<int> rows;
  ForWholeRows(*Grid(), [&rows](const QItemSelectionRange& range) {
    for (int row = range.top(); row <= range.bottom() && rows.size() < kMostListed; ++row) rows << row;
  });
  return rows;
}

QList<int> GridAccessible::selectedColumns() const {
  QList<int> columns;
  for (int column = 0; column < columnCount(); ++column) {
    if (isColumnSelected(column)) columns << column;
  }
  return columns;
}

bool GridAccessible::isColumnSelected(int column) const {
  const QItemSelection selection = SelectionOf(*Grid());
  return rowCount() > 0 &&
         std::any_of(selection.begin(), selection.end(), [this, column](const QItemSelectionRange& range) {
           return range.height() == rowCount() && range.left() <= column && column <= range.right();
         });
}

bool GridAccessible::isRowSelected(int row) const {
  bool selected = false;
  ForWholeRows(*Grid(), [&selected, row](const QItemSelectionRange& range) {
    selected = selected || (range.top() <= row && row <= range.bottom());
  });
  return selected;
}

bool GridAccessible::Select(int top, int left, int bottom, int right,
                            QItemSelectionModel::SelectionFlags how) {
  const QAbstractItemModel& model = *Grid()->model();
  const QModelIndex from = model.index(top, left);
  const QModelIndex to = model.index(bottom, right);
  if (!from.isValid() || !to.isValid()) return false;
  Grid()->selectionModel()->select(QItemSelection(from, to), how);
  return true;
}

bool GridAccessible::selectRow(int row) {
  return Select(row, 0, row, columnCount() - 1, QItemSelectionModel::Select);
}
bool GridAccessible::selectColumn(int column) {
  return Select(0, column, rowCount() - 1, column, QItemSelectionModel::Select);
}
bool GridAccessible::unselectRow(int row) {
  return Select(row, 0, row, columnCount() - 1, QItemSelectionModel::Deselect);
}
bool GridAccessible::unselectColumn(int column) {
  return Select(0, column, rowCount() - 1, column, QItemSelectionModel::Deselect);
}

}  // namespace varnlog::ui
