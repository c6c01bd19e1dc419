#include "ui/GridCellAccessible.h"

#include <QHeaderView>

#include "ui/GridAccessible.h"
#include "ui/TDBGridAccessible.h"

namespace varnlog::ui {

namespace {

QAccessibleInterface* MakeGridInterface(const QString& /*className*/, QObject* object) {
  auto* grid = qobject_cast<TDBGrid*>(object);
  return grid == nullptr ? nullptr : new GridAccessible(grid);
}

GridAccessible* InterfaceOf(TDBGrid& grid) {
  return dynamic_cast<GridAccessible*>(QAccessible::queryAccessibleInterface(&grid));
}

}  // namespace

void InstallGridAccessibility() {
  // Qt keeps a list without duplicates.
  QAccessible::installFactory(MakeGridInterface);
}

void AnnounceCurrentCell(TDBGrid& grid) {
  if (!QAccessible::isActive() || !grid.hasFocus()) return;
  const GridAccessible* table = InterfaceOf(grid);
  QAccessibleInterface* cell = table == nullptr ? nullptr : table->cellAt(grid.Row(), grid.Col());
  if (cell == nullptr) return;
  QAccessibleEvent event(cell, QAccessible::Focus);
  QAccessible::updateAccessibility(&event);
}

void AnnounceSelection(TDBGrid& grid) {
  if (!QAccessible::isActive()) return;
  QAccessibleEvent event(&grid, QAccessible::SelectionWithin);
  QAccessible::updateAccessibility(&event);
}

bool GridPartAccessible::isValid() const {
  return !grid_.isNull() && column_ < grid_->ColumnCount() && row_ < grid_->ApproximateCount();
}

QAccessibleInterface* GridPartAccessible::parent() const {
  return grid_.isNull() ? nullptr : QAccessible::queryAccessibleInterface(grid_.data());
}

QRect GridPartAccessible::OnScreen(QWidget& viewport, const QRect& rect) const {
  return rect.isNull() ? QRect() : QRect(viewport.mapToGlobal(rect.topLeft()), rect.size());
}

QString GridHeadingAccessible::text(QAccessible::Text type) const {
  if (!isValid()) return {};
  const GridColumn& shown = Grid().Model().Column(column());
  switch (type) {
    case QAccessible::Name:
      return shown.heading;
    case QAccessible::Description: {
      const QString sort = Grid().SortText(column());
      return shown.tip.isEmpty() || sort.isEmpty() ? shown.tip + sort
                                                   : shown.tip + QStringLiteral(", ") + sort;
    }
    default:
      return {};
  }
}

QRect GridHeadingAccessible::rect() const {
  if (!isValid()) return {};
  QHeaderView& header = *Grid().horizontalHeader();
  return OnScreen(*header.viewport(), QRect(header.sectionViewportPosition(column()), 0,
                                            header.sectionSize(column()), header.height()));
}

QAccessible::State GridHeadingAccessible::state() const {
  QAccessible::State state;
  state.invalid = !isValid();
  return state;
}

void* GridHeadingAccessible::interface_cast(QAccessible::InterfaceType type) {
  return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
}

void GridHeadingAccessible::doAction(const QString& action) {
  if (isValid() && action == pressAction()) Grid().ClickHeading(column());
}

QModelIndex GridCellAccessible::Index() const {
  return isValid() ? Grid().model()->index(row(), column()) : QModelIndex();
}

QString GridCellAccessible::text(QAccessible::Text type) const {
  if (!isValid()) return {};
  switch (type) {
    case QAccessible::Name:
    case QAccessible::Value:
      return Grid().CellText(row(), column());
    case QAccessible::Description:
      return Grid().Model().Description(row(), column());
    default:
      return {};
  }
}

QRect GridCellAccessible::rect() const {
  return isValid() ? OnScreen(*Grid().viewport(), Grid().visualRect(Index())) : QRect();
}

QAccessible::State GridCellAccessible::state() const {
  QAccessible::State state;
  if (!isValid()) {
    state.invalid = true;
    return state;
  }
  const QModelIndex index = Index();
  state.selectable = true;
  state.focusable = true;
  state.selected = isSelected();
  state.focused = Grid().hasFocus() && Grid().currentIndex() == index;
  state.editable = index.flags().testFlag(Qt::ItemIsEditable) && IsOpen(Grid().StateOf(row(), column()));
  state.readOnly = !state.editable;
  state.offscreen = !Grid().viewport()->rect().intersects(Grid().visualRect(index));
  return state;
}

void* GridCellAccessible::interface_cast(QAccessible::InterfaceType type) {
  if (type == QAccessible::TableCellInterface) return static_cast<QAccessibleTableCellInterface*>(this);
  if (type == QAccessible::ActionInterface) return static_cast<QAccessibleActionInterface*>(this);
  return nullptr;
}

void GridCellAccessible::doAction(const QString& action) {
  if (!isValid() || action != setFocusAction()) return;
  Grid().setFocus();
  Grid().SetCurrentCell(row(), column());
}

bool GridCellAccessible::isSelected() const {
  return isValid() && Grid().selectionModel()->isSelected(Index());
}

QList<QAccessibleInterface*> GridCellAccessible::columnHeaderCells() const {
  const auto* table = dynamic_cast<GridAccessible*>(parent());
  return table == nullptr ? QList<QAccessibleInterface*>() : QList{table->Heading(column())};
}

}  // namespace varnlog::ui
