#pragma once

#include <QAccessible>
#include <QPointer>

#include "ui/TDBGrid.h"

namespace varnlog::ui {

/// What headings and cells have in common for screen readers: a place in a grid.
class GridPartAccessible : public QAccessibleInterface, public QAccessibleActionInterface {
 public:
  GridPartAccessible(TDBGrid* grid, int row, int column) : grid_(grid), row_(row), column_(column) {}

  [[nodiscard]] int row() const { return row_; }
  [[nodiscard]] int column() const { return column_; }

  [[nodiscard]] bool isValid() const override;
  [[nodiscard]] QObject* object() const override { return nullptr; }
  [[nodiscard]] QAccessibleInterface* parent() const override;
  [[nodiscard]] QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
  [[nodiscard]] QAccessibleInterface* childAt(int /*x*/, int /*y*/) const override { return nullptr; }
  [[nodiscard]] int childCount() const override { return 0; }
  int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }
  void setText(QAccessible::Text /*type*/, const QString& /*text*/) override {}
  [[nodiscard]] QStringList keyBindingsForAction(const QString& /*action*/) const override { return {}; }

 protected:
  [[nodiscard]] TDBGrid& Grid() const { return *grid_; }
  [[nodiscard]] QRect OnScreen(QWidget& viewport, const QRect& rect) const;

 private:
  QPointer<TDBGrid> grid_;
  int row_;
  int column_;
};

/// A heading; its action sorts.
class GridHeadingAccessible final : public GridPartAccessible {
 public:
  GridHeadingAccessible(TDBGrid* grid, int column) : GridPartAccessible(grid, -1, column) {}
  [[nodiscard]] QString text(QAccessible::Text type) const override;
  [[nodiscard]] QRect rect() const override;
  [[nodiscard]] QAccessible::Role role() const override { return QAccessible::ColumnHeader; }
  [[nodiscard]] QAccessible::State state() const override;
  void* interface_cast(QAccessible::InterfaceType type) override;
  [[nodiscard]] QStringList actionNames() const override { return {pressAction()}; }
  void doAction(const QString& action) override;
};

/// A cell; its name is the text shown, its description what the user may do with it.
class GridCellAccessible final : public GridPartAccessible, public QAccessibleTableCellInterface {
 public:
  using GridPartAccessible::GridPartAccessible;
  [[nodiscard]] QString text(QAccessible::Text type) const override;
  [[nodiscard]] QRect rect() const override;
  [[nodiscard]] QAccessible::Role role() const override { return QAccessible::Cell; }
  [[nodiscard]] QAccessible::State state() const override;
  void* interface_cast(QAccessible::InterfaceType type) override;
  [[nodiscard]] QStringList actionNames() const override { return {setFocusAction()}; }
  void doAction(const QString& action) override;

  [[nodiscard]] bool isSelected() const override;
  [[nodiscard]] QList<QAccessibleInterface*> columnHeaderCells() const override;
  [[nodiscard]] QList<QAccessibleInterface*> rowHeaderCells() const override { return {}; }
  [[nodiscard]] int columnIndex() const override { return column(); }
  [[nodiscard]] int rowIndex() const override { return row(); }
  [[nodiscard]] int columnExtent() const override { return 1; }
  [[nodiscard]] int rowExtent() const override { return 1; }
  [[nodiscard]] QAccessibleInterface* table() const override { return parent(); }

 private:
  [[nodiscard]] QModelIndex Index() const;
};

}  // namespace varnlog::ui
