#include <QAbstractItemView>
#include <QApplication>
#include <QClipboard>
#include <QLineEdit>

#include "tests/support/Table.h"
#include "tests/ui/GridFixture.h"
#include "ui/CellEditors.h"

namespace varnlog::ui::test {
namespace {

class TDBGridEditingTest : public GridTest {
 protected:
  [[nodiscard]] QLineEdit* Line() const { return grid_.viewport()->findChild<QLineEdit*>(); }
  [[nodiscard]] ListEditor* List() const { return grid_.viewport()->findChild<ListEditor*>(); }
};

using Writes = std::vector<MadeUpRows::Written>;
using Asked = std::vector<std::pair<int, int>>;

TEST_F(TDBGridEditingTest, TypingReplacesTheValueAndEnterStoresIt) {
  Shows(100);
  grid_.SetCurrentCell(4, 2);
  Types("72");
  ASSERT_NE(Line(), nullptr);
  EXPECT_EQ(Line()->text(), "72");
  Presses(Qt::Key_Return);
  EXPECT_EQ(rows_.written, (Writes{{4, 2, "72"}}));
  EXPECT_EQ(rows_.editsAsked, (Asked{{2, '7'}}));
  EXPECT_EQ(grid_.CellText(4, 2), "72");
  EXPECT_FALSE(grid_.IsEditing());
}

TEST_F(TDBGridEditingTest, F2KeepsTheValueEscapeGivesUpAndNoChangeIsNoCorrection) {
  Shows(100);
  grid_.SetCurrentCell(4, 2);
  Presses(Qt::Key_F2);
  ASSERT_NE(Line(), nullptr);
  EXPECT_EQ(Line()->text(), "64");
  Presses(Qt::Key_End);
  Types("5");
  EXPECT_EQ(Line()->text(), "645");
  Presses(Qt::Key_Escape);
  EXPECT_FALSE(grid_.IsEditing());
  EXPECT_TRUE(rows_.written.empty());
  EXPECT_EQ(grid_.CellText(4, 2), "64");
  EXPECT_EQ(rows_.editsAsked, (Asked{{2, 0}}));
  Presses(Qt::Key_F2);
  Presses(Qt::Key_Return);
  Types("64");
  Presses(Qt::Key_Return);
  EXPECT_TRUE(rows_.written.empty());
}

TEST_F(TDBGridEditingTest, LeavingTheEditorStoresWhatWasTyped) {
  Shows(100);
  grid_.SetCurrentCell(4, 2);
  Types("70");
  ClicksCell(7, 1);
  EXPECT_EQ(rows_.written, (Writes{{4, 2, "70"}}));
  EXPECT_EQ(Current(), Cell(7, 1));
}

TEST_F(TDBGridEditingTest, ARefusedEditOpensNoEditor) {
  Shows(100);
  rows_.refuse = true;
  grid_.SetCurrentCell(4, 2);
  Types("7");
  Presses(Qt::Key_F2);
  DoubleClicksCell(6, 2);
  EXPECT_EQ(rows_.editsAsked, (Asked{{2, '7'}, {2, 0}, {2, 0}}));
  EXPECT_FALSE(grid_.IsEditing());
  EXPECT_EQ(Current(), Cell(6, 2)) << "the cell asked about is the current one";
}

TEST_F(TDBGridEditingTest, ColumnsThatAreNotTheUsersNeverAsk) {
  Shows(100);
  grid_.SetCurrentCell(4, 1);
  Types("x");
  Presses(Qt::Key_F2);
  DoubleClicksCell(6, 0);
  EXPECT_TRUE(rows_.editsAsked.empty());
  grid_.SetAllowUpdate(false);
  grid_.SetCurrentCell(4, 2);
  Types("7");
  EXPECT_TRUE(rows_.editsAsked.empty());
  EXPECT_EQ(rows_.refusals, 1) << "not silently";
  EXPECT_EQ(grid_.StateOf(4, 2), CellState::kLocked) << "nor does it look open";
}

TEST_F(TDBGridEditingTest, ARefusedEntryStaysInItsEditorUntilItIsStoredOrGivenUp) {
  Shows(100);
  rows_.writeFailure = DataFailure{.number = 3045, .text = "in use", .keepsEntry = true};
  grid_.SetCurrentCell(4, 2);
  Types("70");
  Presses(Qt::Key_Return);
  ASSERT_NE(Line(), nullptr);
  EXPECT_FALSE(grid_.CommitEdit());
  Settle();
  ClicksCell(7, 1);
  Settle();
  ASSERT_NE(Line(), nullptr);
  EXPECT_EQ(Line()->text(), "70");
  EXPECT_EQ(Current(), Cell(4, 2)) << "back in the cell that waits";
  EXPECT_EQ(rows_.errors.size(), 3U) << "one message a try";
  rows_.writeFailure.reset();
  EXPECT_TRUE(grid_.CommitEdit());
  EXPECT_EQ(rows_.written, (Writes{{4, 2, "70"}}));

  rows_.writeFailure = DataFailure{.number = 3045, .text = "in use", .keepsEntry = true};
  Types("71");
  Presses(Qt::Key_Return);
  Presses(Qt::Key_Escape);
  EXPECT_FALSE(grid_.IsEditing());
  EXPECT_EQ(grid_.CellText(4, 2), "70");
}

TEST_F(TDBGridEditingTest, KeysOfCommandsAreLeftToThem) {
  Shows(100);
  grid_.SetCurrentCell(4, 2);
  Presses(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(rows_.undone, 1);
  Types("70");
  ASSERT_NE(Line(), nullptr);
  for (const int key : {Qt::Key_U, Qt::Key_D}) {
    QKeyEvent asks(QEvent::ShortcutOverride, key, Qt::ControlModifier);
    asks.ignore();
    QCoreApplication::sendEvent(Line(), &asks);
    EXPECT_FALSE(asks.isAccepted()) << key << " would erase what was typed";
  }
}

TEST_F(TDBGridEditingTest, AFailedWriteShowsTheStoredValueAndTells) {
  Shows(100);
  rows_.writeFailure = DataFailure{3585, "deleted"};
  grid_.SetCurrentCell(4, 2);
  Types("70");
  Presses(Qt::Key_Return);
  EXPECT_EQ(rows_.errors, (std::vector<std::pair<int, QString>>{{3585, "deleted"}}));
  EXPECT_EQ(grid_.CellText(4, 2), "64");
  EXPECT_FALSE(grid_.IsEditing());
}

TEST_F(TDBGridEditingTest, ReadingTheRowsAnewKeepsWhatIsBeingTyped) {
  Shows(100);
  grid_.SetCurrentCell(4, 2);
  Types("7");
  grid_.Refresh();
  grid_.SetApproximateCount(150);
  Settle();
  ASSERT_NE(Line(), nullptr);
  EXPECT_EQ(Line()->text(), "7");
}

TEST_F(TDBGridEditingTest, AnEntryIsLimitedInCharacters) {
  const QString grin = QString::fromUcs4(U"\U0001F600");
  Shows(100);
  for (const auto& [pasted, kept] : Table<QString, QString>{{"123456789", "12345"},
                                                            {"äöüßÄÖ", "äöüßÄ"},
                                                            {"a\tb\nc", "a b c"},
                                                            {grin.repeated(7), grin.repeated(5)},
                                                            {"", ""}}) {
    grid_.SetCurrentCell(4, 2);
    Presses(Qt::Key_F2);
    QApplication::clipboard()->setText(pasted);
    if (pasted.isEmpty()) Line()->clear();
    Line()->paste();
    EXPECT_EQ(Line()->text(), kept) << pasted.toStdString();
    Presses(Qt::Key_Escape);
  }
  Types("12345");
  Line()->setCursorPosition(2);
  Types("9");
  EXPECT_EQ(Line()->text(), "12345");
  EXPECT_EQ(Line()->cursorPosition(), 2);
}

TEST_F(TDBGridEditingTest, TabGoesToOpenCellsThatAreEmptyOnly) {
  for (int row = 0; row < 100; ++row) rows_.states[{row, 2}] = CellState::kLocked;
  rows_.states[{1, 3}] = CellState::kNoneEdit;
  Shows(100);
  grid_.SetCurrentCell(0, 0);
  std::vector<Cell> visited;
  for (int i = 0; i < 4; ++i) {
    Presses(Qt::Key_Tab);
    visited.push_back(Current());
  }
  EXPECT_EQ(visited, (std::vector<Cell>{{0, 4}, {3, 3}, {3, 4}, {5, 3}}));
  Presses(Qt::Key_Backtab, Qt::ShiftModifier);
  EXPECT_EQ(Current(), Cell(3, 4));
  grid_.SetAllowUpdate(false);
  grid_.SetCurrentCell(0, 0);
  Presses(Qt::Key_Tab);
  EXPECT_EQ(Current(), Cell(0, 1)) << "without updates to every cell";
}

TEST_F(TDBGridEditingTest, AValueIsConfirmedAsItStandsAndOnlyWhereItIsOpen) {
  rows_.states[{1, 2}] = CellState::kLocked;
  rows_.states[{2, 2}] = CellState::kPending;
  Shows(100);
  for (int row = 0; row < 3; ++row) {
    grid_.SetCurrentCell(row, 2);
    Presses(Qt::Key_Return, Qt::ControlModifier);
  }
  grid_.SetCurrentCell(1, 3);
  EXPECT_FALSE(grid_.ConfirmValue()) << "empty";
  EXPECT_EQ(rows_.written, (Writes{{0, 2, "60"}}));
  rows_.refuse = true;
  grid_.SetCurrentCell(3, 2);
  EXPECT_FALSE(grid_.ConfirmValue()) << "asked like any entry";
}

TEST_F(TDBGridEditingTest, TabInTheEditorStoresAndGoesOn) {
  Shows(100);
  grid_.SetCurrentCell(0, 2);
  Types("70");
  Presses(Qt::Key_Tab);
  EXPECT_EQ(rows_.written, (Writes{{0, 2, "70"}}));
  EXPECT_EQ(Current(), Cell(0, 4));
  EXPECT_FALSE(grid_.IsEditing());
}

TEST_F(TDBGridEditingTest, TheSearchForAnOpenCellLetsOtherEventsThrough) {
  rows_.usualState = CellState::kLocked;
  rows_.commentOpen = false;
  rows_.states[{2997, 4}] = CellState::kEdit;
  Shows(3000);
  grid_.SetCurrentCell(0, 0);
  QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
  QCoreApplication::sendEvent(&grid_, &tab);
  EXPECT_EQ(Current(), Cell(0, 0)) << "found only in later slices";
  for (int i = 0; i < 100 && grid_.Row() == 0; ++i) Settle();
  EXPECT_EQ(Current(), Cell(2997, 4));
  grid_.SetCurrentCell(0, 0);
  QKeyEvent again(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
  QCoreApplication::sendEvent(&grid_, &again);
  Presses(Qt::Key_Down);
  for (int i = 0; i < 20; ++i) Settle();
  EXPECT_EQ(Current(), Cell(1, 0)) << "any other key gives the search up";
}

TEST_F(TDBGridEditingTest, AltDownOpensTheListAChoiceIsStoredAndEscapeIsNone) {
  Shows(100);
  grid_.SetCurrentCell(0, 3);
  Presses(Qt::Key_Down, Qt::AltModifier);
  ASSERT_NE(List(), nullptr);
  EXPECT_TRUE(List()->view()->isVisible());
  EXPECT_EQ(List()->currentText(), "nein");
  EXPECT_EQ(rows_.buttons, std::vector<int>{3});
  EXPECT_TRUE(rows_.editsAsked.empty()) << "asked once, by the button";
  Presses(Qt::Key_Down);
  Presses(Qt::Key_Return);
  EXPECT_EQ(rows_.written, (Writes{{0, 3, "unbekannt"}}));
  EXPECT_EQ(List(), nullptr);
  rows_.written.clear();
  ClicksButton(2, 3);
  ASSERT_NE(List(), nullptr);
  EXPECT_EQ(Current(), Cell(2, 3));
  Presses(Qt::Key_Down);
  Presses(Qt::Key_Escape);
  EXPECT_EQ(List(), nullptr);
  EXPECT_TRUE(rows_.written.empty());
}

TEST_F(TDBGridEditingTest, ARefusedListStaysClosed) {
  rows_.states[{3, 3}] = CellState::kNoneEdit;
  Shows(100);
  rows_.refuse = true;
  ClicksButton(2, 3);
  EXPECT_EQ(rows_.buttons, std::vector<int>{3});
  EXPECT_EQ(List(), nullptr);
  ClicksButton(3, 3);
  EXPECT_EQ(rows_.buttons, std::vector<int>{3}) << "a cell that can never be edited has no button";
}

QStringList warnings;

TEST_F(TDBGridEditingTest, CancellingPutsAnOpenListAwayOnce) {
  Shows(100);
  ClicksButton(2, 3);
  ASSERT_NE(List(), nullptr);
  warnings.clear();
  const auto previous = qInstallMessageHandler(
      [](QtMsgType, const QMessageLogContext&, const QString& text) { warnings << text; });
  grid_.CancelEdit();
  Settle();
  qInstallMessageHandler(previous);
  EXPECT_TRUE(warnings.filter("closeEditor").isEmpty()) << warnings.join('\n').toStdString();
  EXPECT_EQ(List(), nullptr);
  EXPECT_TRUE(rows_.written.empty());
}

TEST_F(TDBGridEditingTest, ALetterPreselectsAndEnterStores) {
  Shows(100);
  grid_.SetCurrentCell(1, 3);
  Types("u");
  ASSERT_NE(List(), nullptr);
  EXPECT_EQ(List()->currentText(), "unbekannt");
  EXPECT_TRUE(rows_.written.empty()) << "a single letter must not be final";
  Presses(Qt::Key_Return);
  EXPECT_EQ(rows_.written, (Writes{{1, 3, "unbekannt"}}));
}

}  // namespace
}  // namespace varnlog::ui::test
