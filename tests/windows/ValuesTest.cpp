#include "tests/windows/MainWindow.h"

// What was typed is never lost, and what is not locked yet can be taken back.

namespace varnlog::app::test {
namespace {

using core::literals::operator""_key;
using enum CommandId;

class Values : public MainWindow {
 protected:
  void SetUp() override {
    MainWindow::SetUp();
    Starts();
    (void)TakeMessages();
  }
  /// Types into the first row's voltage and leaves the editor open.
  void Types(const QString& text) {
    Window().activateWindow();
    Grid().SetCurrentCell(0, kVoltageColumn);
    Grid().setFocus();
    Settle();
    QTest::keyClick(&Grid(), Qt::Key_F2);
    Settle();
    ASSERT_TRUE(Grid().IsEditing());
    QTest::keySequence(QApplication::focusWidget(), QKeySequence::SelectAll);
    QTest::keyClicks(QApplication::focusWidget(), text);
  }
  void ReportsAnother() { installation_.Reports({cli::NewExposure("Neu", "XI", "01.01.2019", "08:00:00")}); }
  static void Activates() { emit qApp->applicationStateChanged(Qt::ApplicationActive); }
};

TEST_F(Values, WhateverRebuildsPrintsOrLeavesStoresTheOpenEntryFirst) {
  int volt = 50;
  for (const CommandId command : {mnuViewLoad, mnuSortAll, mnuFilePrintPreview, mnuEditUpdate}) {
    const std::string text = std::to_string(++volt);
    Types(QString::fromStdString(text));
    Triggers(command);
    EXPECT_EQ(Stored("tXraySVolt"), text) << Def(command).name;
    EXPECT_FALSE(Grid().IsEditing()) << Def(command).name;
    if (auto* preview = Window().findChild<QWidget*>("frmPreview")) {
      preview->parentWidget()->close();
      Settle();
    }
  }
  Types("61");
  ClicksHeading(logview::kDateColumn);
  EXPECT_EQ(Stored("tXraySVolt"), "61");
  Triggers(mnuSortAll);
  Types("62");
  ASSERT_TRUE(Quits());
  EXPECT_EQ(Stored("tXraySVolt"), "62");
}

/// What the state of a cell means to those who do not see its colour.
TEST_F(Values, TellHowLongTheyCanBeChanged) {
  const auto meaning = [this](int column) { return Grid().Model().StateText(0, column); };
  EXPECT_EQ(meaning(kVoltageColumn), Text("RS_STATE_OPEN"_key));
  Enters(0, kVoltageColumn, "63");
  EXPECT_EQ(meaning(kVoltageColumn), Text("RS_STATE_PENDING"_key));
  EXPECT_EQ(meaning(logview::kCommentColumn), Text("RS_STATE_ALWAYS"_key));
  Grid().ClickHeading(kVoltageColumn);
  EXPECT_EQ(Grid().CellText(0, kVoltageColumn), "");
  Grid().ClickHeading(kVoltageColumn);
  EXPECT_EQ(meaning(kVoltageColumn), Text("RS_STATE_PENDING"_key)) << "read anew";
}

TEST_F(Values, AnUpdateOnActivationWaitsForTheEndOfADialogOrAnEntry) {
  ReportsAnother();
  Types("63");
  Activates();
  QTest::qWait(500);
  EXPECT_TRUE(Grid().IsEditing());
  EXPECT_EQ(Grid().ApproximateCount(), 4);
  ASSERT_TRUE(Window().Results()->CommitEdit());
  EXPECT_TRUE(QTest::qWaitFor([this] { return Grid().ApproximateCount() == 5; }, 10'000));

  installation_.Reports({cli::NewExposure("Spät", "XI", "02.01.2019", "08:00:00")});
  InDialog("frmPatSearch", [this](QDialog& dialog) {
    Activates();
    QTest::qWait(500);
    EXPECT_EQ(Grid().ApproximateCount(), 5) << "neither updated nor rebuilt";
    Cancels(dialog);
  });
  Triggers(mnuSortPatAll);
  EXPECT_TRUE(QTest::qWaitFor([this] { return Grid().ApproximateCount() == 6; }, 10'000));
  EXPECT_EQ(Window().windowTitle().section(" - [", 0, 0), Text("RS_ALLPATIENTIMG"_key));
}

TEST_F(Values, CtrlZTakesPendingEntriesBackTheCurrentCellsFirst) {
  const QString before = Grid().CellText(1, kVoltageColumn);
  Enters(0, kVoltageColumn, "63");
  Enters(1, kVoltageColumn, "64");
  const auto presses = [this] {
    QTest::keyClick(&Grid(), Qt::Key_Z, Qt::ControlModifier);
    Settle();
  };
  Grid().SetCurrentCell(0, kVoltageColumn);
  presses();
  EXPECT_EQ(Grid().CellText(0, kVoltageColumn), "");
  EXPECT_EQ(Grid().StateOf(0, kVoltageColumn), ui::CellState::kEdit);
  presses();
  EXPECT_EQ(Grid().CellText(1, kVoltageColumn), before) << "then the last one made";
  EXPECT_EQ(Grid().Row(), 1) << "where it can be seen";
  const int beeps = program_->Beeps();
  presses();
  EXPECT_EQ(program_->Beeps(), beeps + 1) << "nothing is left";
  ASSERT_TRUE(Quits());
  EXPECT_EQ(Stored("tXrayBEdVolt"), "1") << "and nothing is locked";
}

TEST_F(Values, AValueIsEmptiedOnPurposeOnly) {
  Enters(0, kVoltageColumn, "63");
  program_->AnswersWith(core::MessageAnswer::kNo);
  Enters(0, kVoltageColumn, "");
  EXPECT_EQ(TakeMessages().size(), 1);
  EXPECT_EQ(Grid().CellText(0, kVoltageColumn), "63");
  program_->AnswersWith(core::MessageAnswer::kYes);
  Enters(0, kVoltageColumn, "");
  EXPECT_EQ(Stored("tXraySVolt"), "");
}

TEST_F(Values, ARefusedEntryStaysInItsEditor) {
  installation_.WithLog(false, [this](dao::Database& log) {
    const dao::ChangeGroup others = log.BeginChanges();
    Enters(0, kVoltageColumn, "65");
    EXPECT_EQ(TakeMessages(), QStringList(Text("RS_ERR_RECORDEX"_key)));
  });
  ASSERT_TRUE(Grid().IsEditing());
  Triggers(mnuViewLoad);
  EXPECT_EQ(Stored("tXraySVolt"), "65");
}

TEST_F(Values, QuittingNamesWhatWillBeLockedAndShowsItOnRequest) {
  Enters(1, kVoltageColumn, "63");
  program_->AnswersFirst({core::MessageAnswer::kLook});
  EXPECT_FALSE(Quits());
  const QString question = TakeMessages().value(0);
  EXPECT_TRUE(question.contains("O'Hara, ")) << question.toStdString();
  EXPECT_TRUE(question.contains("kV 63")) << question.toStdString();
  EXPECT_EQ(Patients(), Names({"O'Hara"})) << "the rows in question";
  QTest::keyClick(&Grid(), Qt::Key_Z, Qt::ControlModifier);
  Triggers(mnuViewLoad);
  EXPECT_EQ(Grid().ApproximateCount(), 4);
  program_->AnswersFirst({core::MessageAnswer::kNo});
  EXPECT_FALSE(Quits());
  (void)TakeMessages();
  EXPECT_TRUE(Quits());
  EXPECT_EQ(TakeMessages(), QStringList(Text("RC_QUIT"_key))) << "nothing is pending";
}

TEST_F(Values, QuittingWaitsForAnotherWorkstationAndLeavesNothingOpenByItself) {
  Enters(0, kVoltageColumn, "63");
  installation_.WithLog(false, [this](dao::Database& log) {
    const dao::ChangeGroup others = log.BeginChanges();
    program_->AnswersFirst({core::MessageAnswer::kYes, core::MessageAnswer::kCancel});
    EXPECT_FALSE(Quits());
    const QString failure = TakeMessages().value(1);
    EXPECT_TRUE(failure.contains("3045: " + Text("GL_ERR_3045"_key))) << failure.toStdString();
    EXPECT_EQ(Grid().ApproximateCount(), 4) << "nothing was closed";
  });
  ASSERT_TRUE(Quits());
  EXPECT_EQ(Stored("tXrayBEdVolt"), "0");
}

TEST_F(Values, ALogThatCannotBeReadDoesNotClaimToBeEmpty) {
  installation_.WithLog(false, [](dao::Database& log) { log.Execute("ALTER TABLE TXray RENAME TO Weg"); });
  Triggers(mnuViewLoad);
  EXPECT_EQ(Grid().EmptyText(), Text("RS_UNREADABLE"_key));
  installation_.WithLog(false, [](dao::Database& log) { log.Execute("ALTER TABLE Weg RENAME TO TXray"); });
  Triggers(mnuViewLoad);
  EXPECT_EQ(Grid().EmptyText(), Text("RS_EMPTY"_key));
}

}  // namespace
}  // namespace varnlog::app::test
