#include <QTreeWidget>

#include "tests/windows/MainWindow.h"
#include "ui/SuggestingEdit.h"

namespace varnlog::app::test {
namespace {

using enum CommandId;

/// What the window proposes and wonders at while something is entered.
class EntryHints : public MainWindow {
 protected:
  void SetUp() override {
    MainWindow::SetUp();
    Starts();
    program_->Window().activateWindow();
    RunningProgram::Settle();
  }
  ui::SuggestingEdit& Opens(int row, int column) {
    program_->Grid().SetCurrentCell(row, column);
    QTest::keyClick(&program_->Grid(), Qt::Key_F2);
    return *program_->Grid().findChild<ui::SuggestingEdit*>();
  }
};

TEST_F(EntryHints, CommentsAreProposedAndTakenOnlyWhenAskedFor) {
  program_->Enters(0, logview::kCommentColumn, "Wurzelspitze nicht erfasst");
  ui::SuggestingEdit& box = Opens(1, logview::kCommentColumn);
  QTest::keyClicks(&box, "spi");
  EXPECT_EQ(box.Shown(), QStringList()) << "no word begins so";
  box.clear();
  QTest::keyClicks(&box, "nicht");
  EXPECT_EQ(box.Shown(), QStringList("Wurzelspitze nicht erfasst"));
  EXPECT_EQ(box.text(), "nicht");
  QTest::keyClick(&box, Qt::Key_Down);
  EXPECT_EQ(box.text(), "Wurzelspitze nicht erfasst");
  QTest::keyClick(&box, Qt::Key_Return);
  RunningProgram::Settle();
  EXPECT_EQ(program_->Grid().CellText(1, logview::kCommentColumn), "Wurzelspitze nicht erfasst");
}

TEST_F(EntryHints, AStrangeValueIsAskedAboutAndNeverRefused) {
  (void)program_->TakeMessages();
  program_->AnswersFirst({core::MessageAnswer::kNo});
  program_->Enters(0, kVoltageColumn, "6o");
  EXPECT_EQ(program_->TakeMessages().size(), 1);
  EXPECT_EQ(program_->Grid().CellText(0, kVoltageColumn), "");
  auto* const editor = program_->Grid().findChild<QLineEdit*>();
  ASSERT_NE(editor, nullptr) << "what was typed waits to be mended";
  EXPECT_EQ(editor->text(), "6o");
  program_->AnswersFirst({core::MessageAnswer::kYes});
  QTest::keyClick(editor, Qt::Key_Return);
  RunningProgram::Settle();
  EXPECT_EQ(program_->Grid().CellText(0, kVoltageColumn), "6o");
  (void)program_->TakeMessages();
  program_->Enters(1, kVoltageColumn, "60");
  EXPECT_EQ(program_->TakeMessages(), QStringList());
}

TEST_F(EntryHints, ThePatientSearchBeginsWithTheRowAndFindsWhileTyping) {
  program_->Grid().SetCurrentCell(3, 0);
  const QString patient = program_->Grid().CellText(3, logview::kPatientColumn);
  program_->InDialog("frmPatSearch", [&](QDialog& dialog) {
    auto& list = Child<QTreeWidget>(dialog, "lvwPat");
    ASSERT_EQ(list.topLevelItemCount(), 3) << "each patient once";
    EXPECT_EQ(list.topLevelItem(0)->text(0), patient);
    auto& box = Child<QLineEdit>(dialog, "txtSearch");
    QTest::keyClicks(&box, "ab");
    EXPECT_TRUE(QTest::qWaitFor([&] { return list.topLevelItemCount() == 1; }, 3'000));
    EXPECT_EQ(box.text(), "ab") << "what is being typed stays";
    Child<QPushButton>(dialog, "cmdCancel").click();
  });
  program_->Triggers(mnuSortPatAll);
  EXPECT_TRUE(program_->DialogsDone());
}

}  // namespace
}  // namespace varnlog::app::test
