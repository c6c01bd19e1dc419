#include <algorithm>

#include <QCheckBox>
#include <QElapsedTimer>
#include <QLabel>

#include "tests/windows/MainWindow.h"

namespace varnlog::app::test {
namespace {

using enum CommandId;

/// What the suite reports while the program runs.
class Waiting : public MainWindow {
 protected:
  void SetUp() override {
    MainWindow::SetUp();
    Starts();
  }
  void Reports(const char* name) {
    installation_.Reports({cli::NewExposure(name, "XI", "05.06.2022", "08:00:00")});
  }
  [[nodiscard]] const QLabel& Panel(const char* name = "pnlWaiting") const {
    return Child<QLabel>(program_->Window(), name);
  }
  template <typename Condition>
  static bool Soon(Condition condition) {
    return QTest::qWaitFor(condition, 5'000);
  }
};

TEST_F(Waiting, ExposuresAreCountedWithinAMoment) {
  constexpr int kTimes = 50;
  std::vector<qint64> times;
  for (int i = 1; i <= kTimes; ++i) {
    QElapsedTimer arrived;
    Reports("Neu");
    arrived.start();
    const QString number = QString::number(i);
    ASSERT_TRUE(Soon([&] { return Panel().isVisible() && Panel().text().endsWith(' ' + number); })) << i;
    times.push_back(arrived.elapsed());
  }
  std::ranges::sort(times);
  RecordProperty("MedianMilliseconds", static_cast<int>(times[kTimes / 2]));
  EXPECT_LE(times[kTimes / 2], 200);
  program_->Triggers(mnuEditUpdate);
  EXPECT_TRUE(Soon([&] { return !Panel().isVisible(); }));
  EXPECT_EQ(program_->Grid().ApproximateCount(), 4 + 1) << "the same exposure over and over";
}

TEST_F(Waiting, AreTakenInAtOnceWhereThatIsWishedAndNobodyIsDisturbed) {
  Reports("Wartet");
  ASSERT_TRUE(Soon([&] { return Panel().isVisible(); }));
  EXPECT_EQ(program_->Grid().ApproximateCount(), 4) << "off at first";
  program_->InDialog("frmProperties", [](QDialog& dialog) {
    Child<QCheckBox>(dialog, "chkTakeInAtOnce").click();
    Child<QPushButton>(dialog, "cmdClose").click();
  });
  program_->Triggers(mnuViewProperties);
  auto& grid = program_->Grid();
  grid.SetCurrentCell(2, logview::kCommentColumn);
  QItemSelection marked(grid.model()->index(1, 2), grid.model()->index(2, 4));
  grid.selectionModel()->select(marked, QItemSelectionModel::ClearAndSelect);
  const QString patient = grid.CellText(2, logview::kPatientColumn);
  (void)program_->TakeMessages();
  program_->Window().activateWindow();
  grid.setFocus();
  RunningProgram::Settle();
  ASSERT_TRUE(grid.hasFocus());
  Reports("Sofort");
  ASSERT_TRUE(Soon([&] { return grid.ApproximateCount() == 6; }));
  EXPECT_EQ(program_->TakeMessages(), QStringList());
  EXPECT_EQ(grid.CellText(grid.Row(), logview::kPatientColumn), patient);
  EXPECT_EQ(grid.Col(), logview::kCommentColumn);
  const QItemSelectionRange kept = grid.selectionModel()->selection().value(0);
  EXPECT_EQ(kept, QItemSelectionRange(grid.model()->index(3, 2), grid.model()->index(4, 4)));
  EXPECT_TRUE(grid.hasFocus());

  grid.SetCurrentCell(2, logview::kCommentColumn);
  QTest::keyClicks(&grid, "abc");
  ASSERT_TRUE(grid.IsEditing());
  Reports("Spaeter");
  ASSERT_TRUE(Soon([&] { return Panel().isVisible(); }));
  QTest::qWait(500);
  EXPECT_TRUE(grid.IsEditing());
  EXPECT_EQ(grid.ApproximateCount(), 6) << "an editor is open";
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  EXPECT_TRUE(Soon([&] { return grid.ApproximateCount() == 7; }));
}

TEST_F(Waiting, WhatWouldHaveToBeAskedWaitsForTheUser) {
  program_->Globals().TakeInAtOnce = true;
  (void)program_->TakeMessages();
  installation_.Reports({cli::NewExposure("Datum", "XI", "gestern", "08:00:00")});
  ASSERT_TRUE(Soon([&] { return Panel().isVisible(); }));
  QTest::qWait(700);
  EXPECT_EQ(program_->Grid().ApproximateCount(), 4);
  EXPECT_EQ(program_->TakeMessages(), QStringList());
  EXPECT_FALSE(program_->Globals().UpdateDeclinedGl) << "the user has declined nothing";
  program_->Triggers(mnuEditUpdate);
  EXPECT_EQ(program_->Grid().ApproximateCount(), 5);
}

TEST_F(Waiting, TheLineBelowTheListAddsUpWhatIsMarkedOrShown) {
  auto& grid = program_->Grid();
  const auto& line = Child<QLabel>(program_->Window(), "lblSums");
  const auto says = [&](core::TextKey key, int count) {
    const QString begin = program_->Text(key).section('$', 0, 0);
    return Soon([&, begin] { return line.text().startsWith(begin + QString::number(count) + ';'); });
  };
  EXPECT_TRUE(says(core::TextKey("RS_SUMS"), 4)) << line.text().toStdString();
  grid.selectionModel()->select({grid.model()->index(1, 2), grid.model()->index(3, 4)},
                                QItemSelectionModel::ClearAndSelect);
  EXPECT_TRUE(says(core::TextKey("RS_SUMS_MARKED"), 3)) << line.text().toStdString();
  grid.SetCurrentCell(0, 2);
  EXPECT_TRUE(says(core::TextKey("RS_SUMS"), 4)) << line.text().toStdString();
  program_->InDialog("frmBegEnd", [](QDialog& dialog) { EntersPeriod(dialog, "1.1.2020", "4.2.2020"); });
  program_->Triggers(mnuSortDateAll);
  EXPECT_TRUE(says(core::TextKey("RS_SUMS"), 2)) << line.text().toStdString();
}

}  // namespace
}  // namespace varnlog::app::test
