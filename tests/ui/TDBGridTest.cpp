#include <QApplication>
#include <QClipboard>
#include <QScrollBar>

#include "tests/ui/GridFixture.h"
#include "ui/TDBGrid.h"

namespace varnlog::ui::test {
namespace {

class TDBGridTest : public GridTest {};

TEST_F(TDBGridTest, ReadsOnlyTheBlocksThatAreShown) {
  Shows(1'000'000);
  EXPECT_EQ(rows_.reads, 1);
  EXPECT_EQ(grid_.CellText(0, 1), "Muster0, Max *01.02.1960");
  Presses(Qt::Key_End, Qt::ControlModifier);
  grid_.grab();
  EXPECT_EQ(Current(), Cell(999'999, 4));
  EXPECT_EQ(grid_.CellText(999'999, 0), "1000000");
  EXPECT_LE(rows_.reads, 3);
}

TEST_F(TDBGridTest, RemembersFewBlocksAndReadsTheOthersAgain) {
  Shows(100'000);
  for (int row = 0; row < RowBlocks::kRowsPerBlock * RowBlocks::kBlocksKept;
       row += RowBlocks::kRowsPerBlock) {
    EXPECT_EQ(grid_.CellText(row, 0), QString::number(row + 1));
  }
  EXPECT_EQ(rows_.reads, RowBlocks::kBlocksKept);
  EXPECT_EQ(grid_.CellText(3, 0), "4");
  EXPECT_EQ(rows_.reads, RowBlocks::kBlocksKept) << "the first block was still there";
  EXPECT_EQ(grid_.CellText(60'000, 0), "60001");
  EXPECT_EQ(grid_.CellText(RowBlocks::kRowsPerBlock, 0), QString::number(RowBlocks::kRowsPerBlock + 1))
      << "the block not used for longest was given up, and is read again";
  EXPECT_EQ(rows_.reads, RowBlocks::kBlocksKept + 2);
}

TEST_F(TDBGridTest, AnEmptySelectionShowsItsHeadingsOnly) {
  Shows(0);
  EXPECT_EQ(grid_.ApproximateCount(), 0);
  EXPECT_EQ(grid_.model()->headerData(3, Qt::Horizontal, Qt::DisplayRole).toString(), "Gravidität");
  EXPECT_EQ(rows_.reads, 0);
  for (const int key : {Qt::Key_Down, Qt::Key_Tab, Qt::Key_F2, Qt::Key_Return}) Presses(key);
  Presses(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(Current(), Cell(-1, -1));
}

TEST_F(TDBGridTest, GrowsWithoutLosingPlaceOrSelection) {
  Shows(500);
  grid_.SetCurrentCell(300, 2);
  const int scrolledTo = grid_.verticalScrollBar()->value();
  rows_.SetCount(200'000);
  grid_.SetApproximateCount(200'000);
  Settle();
  EXPECT_EQ(Current(), Cell(300, 2));
  EXPECT_TRUE(grid_.selectionModel()->isSelected(grid_.model()->index(300, 2)));
  EXPECT_EQ(grid_.verticalScrollBar()->value(), scrolledTo);
  EXPECT_EQ(grid_.CellText(500, 0), "501") << "the last block had been read when it was shorter";
  grid_.SetApproximateCount(100);
  EXPECT_EQ(grid_.ApproximateCount(), 100);
  EXPECT_LT(grid_.Row(), 100);
}

TEST_F(TDBGridTest, TheCountMayChangeWhileABlockIsBeingRead) {
  rows_.onRead = [this] { grid_.SetApproximateCount(90); };
  Shows(100);
  grid_.grab();
  Settle();
  EXPECT_EQ(grid_.ApproximateCount(), 90);
}

TEST_F(TDBGridTest, RowsThatLieElsewhereThanAskedForStayBlank) {
  class Shifted : public MadeUpRows {
   public:
    using MadeUpRows::MadeUpRows;
    std::optional<DataFailure> UnboundReadDataEx(RowBuffer& rowBuf, const std::optional<std::int64_t>& start,
                                                 std::int64_t offset,
                                                 std::optional<std::int64_t>& position) override {
      auto failure = MadeUpRows::UnboundReadDataEx(rowBuf, start, offset, position);
      position = 7;
      return failure;
    }
  } shifted(100);
  Shows(100);
  grid_.SetEvents(&shifted);
  EXPECT_EQ(grid_.CellText(0, 0), "");
  grid_.SetEvents(&rows_);
}

TEST_F(TDBGridTest, TellsAReadFailureOnceAndRecovers) {
  rows_.readFailure = DataFailure{3024, "no file"};
  Shows(1000);
  grid_.grab();
  Presses(Qt::Key_End, Qt::ControlModifier);
  grid_.grab();
  Settle();
  ASSERT_EQ(rows_.errors.size(), 1U);
  EXPECT_EQ(rows_.errors.front(), std::make_pair(3024, QString("no file")));
  EXPECT_EQ(grid_.CellText(999, 0), "");
  // Whoever tells it refreshes the grid, which fails again: that must not go on for ever.
  grid_.Refresh();
  grid_.grab();
  Settle();
  EXPECT_EQ(rows_.errors.size(), 1U);
  rows_.readFailure.reset();
  grid_.Refresh();
  EXPECT_EQ(grid_.CellText(999, 0), "1000");
  rows_.readFailure = DataFailure{.number = 3151, .text = "away", .keepsRows = true};
  grid_.Refresh();
  EXPECT_EQ(grid_.CellText(999, 0), "1000");
}

TEST_F(TDBGridTest, AHandlerThatThrowsIsToldAsAnError) {
  rows_.onRead = [] { throw std::runtime_error("torn page"); };
  Shows(10);
  grid_.grab();
  Settle();
  ASSERT_FALSE(rows_.errors.empty());
  EXPECT_EQ(rows_.errors.front(), std::make_pair(0, QString("torn page")));
}

TEST_F(TDBGridTest, RebindingShowsOtherRowsFromTheFirstOn) {
  Shows(1000);
  grid_.SetCurrentCell(700, 2);
  rows_.SetCount(40);
  grid_.ReBind(40);
  EXPECT_EQ(Current(), Cell(0, 2));
  EXPECT_EQ(grid_.verticalScrollBar()->value(), 0);
  EXPECT_EQ(grid_.ApproximateCount(), 40);
}

TEST_F(TDBGridTest, AHeadingRaisesHeadClickAndKeepsItsOwnMark) {
  Shows(10);
  grid_.SetSortIndicator(1, Qt::DescendingOrder);
  ClicksHeading(2);
  EXPECT_EQ(rows_.headings, std::vector<int>{2});
  EXPECT_EQ(grid_.horizontalHeader()->sortIndicatorSection(), 1);
  EXPECT_EQ(grid_.horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
  EXPECT_TRUE(grid_.selectionModel()->selectedColumns().isEmpty());
  ClicksHeading(1);
  EXPECT_EQ(grid_.horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
  grid_.SetCurrentCell(0, 4);
  Presses(Qt::Key_Up, Qt::AltModifier);
  EXPECT_EQ(rows_.headings, (std::vector<int>{2, 1, 4}));
}

TEST_F(TDBGridTest, WidthsFollowTheFontAndTheLastColumnTakesWhatIsLeft) {
  Shows(10);
  for (int column = 0; column < grid_.ColumnCount(); ++column) grid_.SetColumnWidth(column, 50);
  const auto shown = [this](int column) { return static_cast<const QTableView&>(grid_).columnWidth(column); };
  const int last = grid_.ColumnCount() - 1;
  EXPECT_EQ(grid_.ColumnWidth(last), 50) << "what is kept";
  EXPECT_EQ(shown(last), grid_.viewport()->width() - last * 50);
  grid_.SetColumnWidth(0, grid_.viewport()->width());
  EXPECT_EQ(shown(last), 50) << "no room left";
  const int before = grid_.fontMetrics().horizontalAdvance('0');
  QFont font = grid_.font();
  font.setPixelSize(2 * QFontInfo(font).pixelSize());
  grid_.setFont(font);
  EXPECT_EQ(grid_.ColumnWidth(1), 50 * grid_.fontMetrics().horizontalAdvance('0') / before);
}

TEST_F(TDBGridTest, CopiesTheSelectionAsTabSeparatedText) {
  Shows(100'000);
  grid_.SetCurrentCell(1, 0);
  Presses(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text(), "2");
  Presses(Qt::Key_Down, Qt::ShiftModifier);
  Presses(Qt::Key_Right, Qt::ShiftModifier);
  Presses(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text(), "2\tMuster1, Max *01.02.1960\n3\tMuster2, Max *01.02.1960");
  auto& selection = *grid_.selectionModel();
  selection.select(grid_.model()->index(9, 1), QItemSelectionModel::ClearAndSelect);
  selection.select(grid_.model()->index(5, 0), QItemSelectionModel::Select);
  EXPECT_EQ(grid_.SelectionText(), "6\t\n\tMuster9, Max *01.02.1960")
      << "cells that are not selected stay blank";
  grid_.selectAll();
  grid_.CopySelection();
  const QString all = QApplication::clipboard()->text();
  EXPECT_EQ(all.count('\n') + 1, 100'000);
  EXPECT_TRUE(all.endsWith(grid_.CellText(99'999, 4)));
  ASSERT_GE(rows_.copies.size(), 100U) << "told in slices";
  EXPECT_EQ(rows_.copies.back(), std::make_pair(std::int64_t{100'000}, std::int64_t{100'000}));
  rows_.copyEnds = 2'000;
  grid_.CopySelection();
  EXPECT_EQ(QApplication::clipboard()->text(), all) << "given up: what was copied before stays";
}

TEST_F(TDBGridTest, PaintsStatesInTheirColours) {
  rows_.states = {{{0, 2}, CellState::kLocked}, {{1, 2}, CellState::kEdit}, {{2, 2}, CellState::kNoneEdit}};
  Shows(10);
  grid_.clearSelection();
  GridColors colors = GridColors::Default();
  colors.lockedBack = QColor(10, 20, 30);
  grid_.SetColors(colors);
  const QImage image = grid_.viewport()->grab().toImage();
  const auto back = [&](int row) { return image.pixelColor(CellRect(row, 2).bottomRight() - QPoint(3, 3)); };
  EXPECT_EQ(back(0), QColor(10, 20, 30));
  EXPECT_EQ(back(1), QColor(255, 255, 255));
  EXPECT_EQ(back(2), QColor(255, 255, 0));
}

TEST_F(TDBGridTest, AStateCanBeReadWithoutItsColour) {
  rows_.states = {{{0, 2}, CellState::kLocked}};
  Shows(10);
  const QModelIndex locked = grid_.model()->index(0, 2);
  EXPECT_EQ(locked.data(Qt::AccessibleDescriptionRole).toString(), "Gesperrt");
  const QModelIndex comment = grid_.model()->index(0, 4);
  EXPECT_EQ(comment.data(Qt::AccessibleDescriptionRole).toString(), "Jederzeit");
  QStyleOptionViewItem option;
  option.rect = CellRect(0, 2);
  EXPECT_EQ(grid_.Delegate().ToolTip(option, locked), "Gesperrt");
  EXPECT_EQ(grid_.Delegate().ToolTip(option, grid_.model()->index(0, 0)), "");
  option.rect.setWidth(20);
  EXPECT_EQ(grid_.Delegate().ToolTip(option, grid_.model()->index(1, 2)), "61\nKann noch geändert werden");
}

TEST_F(TDBGridTest, OwnerDrawnColumnsAskBeforeTheButtonIsDrawn) {
  Shows(3);
  const QPoint inButton = ButtonRect(CellRect(1, 3)).topLeft() + QPoint(2, 2);
  const auto pixel = [&] { return grid_.viewport()->grab().toImage().pixelColor(inButton); };
  EXPECT_EQ(pixel(), grid_.palette().color(QPalette::Button));
  EXPECT_GE(rows_.ownerDrawn, 3);
  rows_.ownerDrawsButtons = false;
  EXPECT_EQ(pixel(), QColor(Qt::white));
  rows_.ownerDrawThrows = true;
  pixel();
  Settle();
  ASSERT_FALSE(rows_.errors.empty());
  EXPECT_EQ(rows_.errors.back().second, "ERROR OWNERDRAW: no brush");
}

TEST(CellButton, HasTheGeometryOfItsArrow) {
  const QRect cell(100, 50, 80, 16);
  EXPECT_EQ(ButtonRect(cell), QRect(164, 50, 16, 16));
  EXPECT_EQ(ButtonArrow(ButtonRect(cell)), QPolygon({QPoint(168, 56), QPoint(172, 60), QPoint(176, 56)}));
  EXPECT_EQ(ButtonArrow(QRect(0, 0, 21, 21)), QPolygon({QPoint(5, 8), QPoint(11, 13), QPoint(16, 8)}));
  EXPECT_EQ(ButtonRect(QRect(0, 0, 10, 20)), QRect(0, 0, 10, 10)) << "a cell narrower than high";
}

}  // namespace
}  // namespace varnlog::ui::test
