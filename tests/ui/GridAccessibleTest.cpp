
#include <QAccessible>
#include <QFile>
#include <QScrollBar>

#include "tests/ui/GridFixture.h"
#include "ui/GridAccessible.h"

namespace varnlog::ui::test {
namespace {

// The address sanitizer keeps freed memory for a while.
#ifdef __SANITIZE_ADDRESS__
constexpr long kMostKilobytes = 200 * 1024;
#else
constexpr long kMostKilobytes = 20 * 1024;
#endif

class GridAccessibleTest : public GridTest {
 protected:
  [[nodiscard]] QAccessibleInterface* Reader() { return QAccessible::queryAccessibleInterface(&grid_); }
  [[nodiscard]] QAccessibleTableInterface* Table() { return Reader()->tableInterface(); }

  static long ResidentKilobytes() {
    QFile status("/proc/self/status");
    if (!status.open(QIODevice::ReadOnly)) return 0;
    for (const QByteArray& line : status.readAll().split('\n')) {
      if (line.startsWith("VmRSS:")) return line.mid(6).trimmed().split(' ').front().toLong();
    }
    return 0;
  }
};

TEST_F(GridAccessibleTest, ChildrenAreTheHeadingsAndTheCellsOnTheScreen) {
  Shows(100'000);
  const int columns = grid_.ColumnCount();
  const int rowsOnScreen = grid_.rowAt(grid_.viewport()->height() - 1) + 1;
  EXPECT_EQ(Reader()->role(), QAccessible::Table);
  EXPECT_EQ(Reader()->childCount(), columns * (1 + rowsOnScreen));
  EXPECT_EQ(Reader()->child(1)->text(QAccessible::Name), "Patient");
  EXPECT_EQ(Reader()->child(1)->role(), QAccessible::ColumnHeader);
  EXPECT_EQ(Reader()->child(columns)->text(QAccessible::Name), "1");
  grid_.verticalScrollBar()->setValue(5000);
  QAccessibleInterface* cell = Reader()->child(columns);
  EXPECT_EQ(cell->text(QAccessible::Name), "5001");
  for (int i = 0; i < Reader()->childCount(); ++i) {
    ASSERT_EQ(Reader()->indexOfChild(Reader()->child(i)), i);
    ASSERT_EQ(Reader()->child(i)->parent(), Reader());
  }
  EXPECT_EQ(Reader()->child(Reader()->childCount()), nullptr);
}

TEST_F(GridAccessibleTest, AnyCellCanBeAskedForButFewObjectsAreKept) {
  Shows(100'000);
  const long before = ResidentKilobytes();
  for (int row = 0; row < 100'000; ++row) {
    QAccessibleInterface* cell = Table()->cellAt(row, 2);
    ASSERT_NE(cell, nullptr);
    ASSERT_EQ(cell->tableCellInterface()->rowIndex(), row);
  }
  EXPECT_LT(ResidentKilobytes() - before, kMostKilobytes);
  EXPECT_EQ(Table()->cellAt(100'000, 0), nullptr);
  EXPECT_EQ(Table()->cellAt(0, 5), nullptr);
}

TEST_F(GridAccessibleTest, ACellTellsItsTextStateAndPlace) {
  rows_.states = {{{3, 2}, CellState::kLocked}};
  Shows(100);
  grid_.SetCurrentCell(3, 2);
  QAccessibleInterface* cell = Table()->cellAt(3, 2);
  EXPECT_EQ(cell->text(QAccessible::Name), "63");
  EXPECT_EQ(cell->text(QAccessible::Description), "Gesperrt");
  EXPECT_TRUE(cell->state().readOnly);
  EXPECT_TRUE(cell->state().selected);
  EXPECT_TRUE(cell->state().focused);
  EXPECT_EQ(cell->tableCellInterface()->columnHeaderCells().front()->text(QAccessible::Name), "kV");
  EXPECT_EQ(Reader()->childAt(cell->rect().center().x(), cell->rect().center().y()), cell);
  EXPECT_EQ(Reader()->focusChild(), cell);
  EXPECT_TRUE(Table()->cellAt(4, 2)->state().editable);
  grid_.ReBind(2);
  EXPECT_EQ(Table()->cellAt(3, 2), nullptr);
}

TEST_F(GridAccessibleTest, SelectionIsCountedNotListed) {
  Shows(1'000'000);
  grid_.selectAll();
  EXPECT_EQ(Table()->selectedCellCount(), 5'000'000);
  EXPECT_EQ(Table()->selectedRowCount(), 1'000'000);
  EXPECT_EQ(Table()->selectedColumnCount(), 5);
  EXPECT_EQ(Table()->selectedRows().size(), GridAccessible::kMostListed);
  EXPECT_EQ(Table()->selectedCells().size(), GridAccessible::kMostListed);
  EXPECT_TRUE(Table()->isRowSelected(777'777));
  Table()->unselectRow(777'777);
  EXPECT_FALSE(Table()->isRowSelected(777'777));
  EXPECT_EQ(Table()->selectedRowCount(), 999'999);
}

TEST_F(GridAccessibleTest, TheHeadingTellsTheOrderAndActionsSortAndMoveTheFocus) {
  Shows(100);
  grid_.SetSortTexts("aufsteigend", "absteigend");
  const auto order = [this](int column) { return Reader()->child(column)->text(QAccessible::Description); };
  EXPECT_EQ(order(1), "");
  grid_.SetSortIndicator(1, Qt::DescendingOrder);
  EXPECT_EQ(order(1), "absteigend");
  EXPECT_EQ(order(0), "");
  grid_.SetSortIndicator(1, Qt::AscendingOrder);
  EXPECT_EQ(order(1), "aufsteigend");
  Reader()->child(1)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_EQ(rows_.headings, std::vector<int>{1});
  Table()->cellAt(8, 2)->actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
  EXPECT_EQ(Current(), Cell(8, 2));
}

}  // namespace
}  // namespace varnlog::ui::test
