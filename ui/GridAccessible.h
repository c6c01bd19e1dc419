#pragma once

#include <cstdint>

#include <QAccessibleWidget>
#include <QHash>

#include "ui/TDBGrid.h"

namespace varnlog::ui {

/// The grid for screen readers. Its children are a window: the headings, then the cells of the rows on the
/// screen; any other cell is made when it is asked for by row and column. Only so many objects are kept.
class GridAccessible final : public QAccessibleWidget, public QAccessibleTableInterface {
 public:
  /// Beyond this the objects of cells that are off the screen go.
  static constexpr int kMostCellsKept = 4096;
  /// Lists of selected cells and rows end here; their counts do not.
  static constexpr int kMostListed = 1000;

  explicit GridAccessible(TDBGrid* grid);
  ~GridAccessible() override;
  GridAccessible(const GridAccessible&) = delete;
  GridAccessible& operator=(const GridAccessible&) = delete;

  /// The heading of a column.
  [[nodiscard]] QAccessibleInterface* Heading(int column) const;
  [[nodiscard]] TDBGrid* Grid() const;

  void* interface_cast(QAccessible::InterfaceType type) override;
  [[nodiscard]] int childCount() const override;
  [[nodiscard]] QAccessibleInterface* child(int index) const override;
  [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  [[nodiscard]] QAccessibleInterface* focusChild() const override;

  [[nodiscard]] QAccessibleInterface* caption() const override { return nullptr; }
  [[nodiscard]] QAccessibleInterface* summary() const override { return nullptr; }
  [[nodiscard]] QAccessibleInterface* cellAt(int row, int column) const override;
  [[nodiscard]] int selectedCellCount() const override;
  [[nodiscard]] QList<QAccessibleInterface*> selectedCells() const override;
  [[nodiscard]] QString columnDescription(int column) const override;
  [[nodiscard]] QString rowDescription(int row) const override;
  [[nodiscard]] int selectedColumnCount() const override {
    return static_cast<int>(selectedColumns().size());
  }
  [[nodiscard]] int selectedRowCount() const override;
  [[nodiscard]] int columnCount() const override;
  [[nodiscard]] int rowCount() const override;
  [[nodiscard]] QList<int> selectedColumns() const override;
  [[nodiscard]] QList<int> selectedRows() const override;
  [[nodiscard]] bool isColumnSelected(int column) const override;
  [[nodiscard]] bool isRowSelected(int row) const override;
  bool selectRow(int row) override;
  bool selectColumn(int column) override;
  bool unselectRow(int row) override;
  bool unselectColumn(int column) override;
  void modelChange(QAccessibleTableModelChangeEvent* event) override;

 private:
  static constexpr int kHeadingRow = -1;

  struct Window {
    int firstRow;
    int rows;
  };
  [[nodiscard]] Window OnScreen() const;
  [[nodiscard]] QAccessibleInterface* Object(int row, int column) const;
  void DropAll() const;
  void DropOffScreen() const;
  bool Select(int top, int left, int bottom, int right, QItemSelectionModel::SelectionFlags how);

  // Objects are made when they are asked for, which the interface declares const.
  mutable QHash<std::int64_t, QAccessible::Id> objects_;  // by row and column
};

}  // namespace varnlog::ui
