#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

#include "tests/support/Table.h"
#include "tests/windows/MainWindow.h"

namespace varnlog::app::test {
namespace {

using core::SelectionKind;
using core::literals::operator""_key;
using enum CommandId;

TEST_F(MainWindow, LeavesThemAfterANoUntilTheUpdateIsAskedFor) {
  Starts(core::MessageAnswer::kNo);
  const QString offer = TakeMessages().value(0);
  EXPECT_TRUE(offer.startsWith(Text("RC_XRNOTUPDATED"_key).section('$', 0, 0)));
  EXPECT_TRUE(offer.contains(QString::fromStdString(installation_.log().string()))) << "which log";
  EXPECT_EQ(Grid().ApproximateCount(), 0);
  emit qApp->applicationStateChanged(Qt::ApplicationActive);
  QTest::qWait(400);
  EXPECT_EQ(Grid().ApproximateCount(), 0) << "declined";
  Triggers(mnuEditUpdate);
  EXPECT_EQ(Grid().ApproximateCount(), 4);
  EXPECT_TRUE(Child<QLabel>(Window(), "pnlRows").text().contains("4"));
  installation_.Reports({cli::NewExposure("Neu", "XI", "01.01.2022", "08:00:00")});
  Grid().SetCurrentCell(3, logview::kCommentColumn);
  emit qApp->applicationStateChanged(Qt::ApplicationActive);
  EXPECT_TRUE(QTest::qWaitFor([this] { return Grid().ApproximateCount() == 5; }, 10'000));
  EXPECT_EQ(Grid().ApproximateCount(), 5) << "activation updates again, without a question";
  EXPECT_EQ(Grid().Row(), 4) << "on the same exposure as before";
  EXPECT_EQ(Grid().Col(), int{logview::kCommentColumn});
  const auto meaning = [this](int row) { return Grid().Model().Description(row, 0); };
  EXPECT_EQ(meaning(0), Text("RS_STATE_NEW"_key));
  EXPECT_EQ(meaning(1), "") << "came with the update before";
  (void)TakeMessages();
  Triggers(mnuEditUpdate);
  EXPECT_EQ(TakeMessages(), QStringList(Text("MN_NOXR"_key)));
}

TEST_F(MainWindow, AHeadingSortsAndTheNumbersHeadingBeeps) {
  Starts();
  ClicksHeading(logview::kPatientColumn);
  const Names once = Patients();
  ClicksHeading(logview::kPatientColumn);
  const Names twice = Patients();
  EXPECT_EQ(once, Names({"Abel", "Abel", "O'Hara", "Zander"}));
  EXPECT_EQ(twice, Names({"Zander", "O'Hara", "Abel", "Abel"}));
  const int beeps = program_->Beeps();
  ClicksHeading(logview::kNumberColumn);
  EXPECT_EQ(program_->Beeps(), beeps + 1);
  EXPECT_EQ(Patients(), twice);
  // The frame of the log is rebuilt when its file was worked on.
  Window().Results()->ReloadGrid();
  EXPECT_TRUE(Grid().horizontalHeader()->isSortIndicatorShown());
  EXPECT_EQ(Grid().horizontalHeader()->sortIndicatorSection(), logview::kPatientColumn);
}

TEST_F(MainWindow, EachSelectionShowsItsRowsAndACancelledOneChangesNothing) {
  Starts();
  const auto year = [](QDialog& dialog) { EntersPeriod(dialog, "1.1.2020", "31.12.2020"); };
  const auto abel = [](QDialog& dialog) { SearchesAndTakes(dialog, "Abel"); };
  using Step = std::pair<const char*, std::function<void(QDialog&)>>;
  const Table<CommandId, std::vector<Step>, SelectionKind, std::size_t> rows = {
      {mnuSortDateAll, {{"frmBegEnd", year}}, SelectionKind::kPeriod, 3},
      {mnuSortDateAllXI, {{"frmBegEnd", year}}, SelectionKind::kPeriodXI, 2},
      {mnuSortDateAllXP, {{"frmBegEnd", Cancels}}, SelectionKind::kPeriodXI, 2},
      {mnuSortDateAllXP, {{"frmBegEnd", year}}, SelectionKind::kPeriodXP, 1},
      {mnuSortDateAllXV, {{"frmBegEnd", year}}, SelectionKind::kPeriodXV, 0},
      {mnuSortPatAll, {{"frmPatSearch", abel}}, SelectionKind::kPatient, 2},
      {mnuSortPatPeriod, {{"frmPatSearch", Cancels}}, SelectionKind::kPatient, 2},
      {mnuSortPatPeriod, {{"frmPatSearch", abel}, {"frmBegEnd", Cancels}}, SelectionKind::kPatient, 2},
      {mnuSortPatPeriod, {{"frmPatSearch", abel}, {"frmBegEnd", year}}, SelectionKind::kPatientPeriod, 1},
      {mnuSortAll, {}, SelectionKind::kAll, 4}};
  for (const auto& [command, dialogs, kind, count] : rows) {
    const std::string name(Def(command).name);
    for (const auto& [dialog, user] : dialogs) InDialog(dialog, user);
    Triggers(command);
    EXPECT_TRUE(program_->DialogsDone()) << name;
    EXPECT_EQ(Globals().SortSelectionGl, kind) << name;
    EXPECT_EQ(Patients().size(), count) << name;
  }
}

TEST_F(MainWindow, ThePatientSearchSurvivesAnyEntry) {
  Starts();
  (void)TakeMessages();
  InDialog("frmPatSearch", [&](QDialog& dialog) {
    for (const QString& entry : {QString("'"), QString("["), QString("O'Hara"), QString("%"), QString("Nemo"),
                                 QString(1000, 'x'), QString("\" OR 1=1 --")}) {
      Child<QLineEdit>(dialog, "txtSearch").setText(entry);
      Child<QPushButton>(dialog, "cmdSearch").click();
      const bool told = !TakeMessages().isEmpty();
      const bool found = Child<QTreeWidget>(dialog, "lvwPat").topLevelItemCount() > 0;
      EXPECT_NE(told, found) << entry.toStdString() << ": either a list or a message";
    }
    const QStringList apostrophe(Text("PS_ERR_APOSTROPHE"_key));
    Child<QLineEdit>(dialog, "txtSearch").setText("O'H");
    Child<QPushButton>(dialog, "cmdSearch").click();
    EXPECT_EQ(TakeMessages(), apostrophe);
    Child<QLineEdit>(dialog, "txtSearch").setText("abel,k");
    Child<QPushButton>(dialog, "cmdSearch").click();
    EXPECT_EQ(Child<QTreeWidget>(dialog, "lvwPat").topLevelItemCount(), 1) << "without the blank";
    // On a busy machine the main window becomes active once more meanwhile.
    dialog.activateWindow();
    ASSERT_TRUE(QTest::qWaitFor([&dialog] { return QApplication::activeWindow() == &dialog; }));
    QTest::keyClicks(&Child<QLineEdit>(dialog, "txtSearch"), "x");
    QTest::keyClick(&Child<QLineEdit>(dialog, "txtSearch"), Qt::Key_Down);
    EXPECT_EQ(dialog.focusWidget(), &Child<QTreeWidget>(dialog, "lvwPat"));
    EXPECT_TRUE(Child<QPushButton>(dialog, "cmdOK").isDefault()) << "chosen again";
    Child<QLineEdit>(dialog, "txtSearch").setText("*");
    Child<QPushButton>(dialog, "cmdSearch").click();
    auto& list = Child<QTreeWidget>(dialog, "lvwPat");
    ASSERT_EQ(list.topLevelItemCount(), 3);
    list.setCurrentItem(list.topLevelItem(1));
    Child<QPushButton>(dialog, "cmdOK").click();
    EXPECT_EQ(TakeMessages(), apostrophe) << "found, but not to be chosen";
    Cancels(dialog);
  });
  Triggers(mnuSortPatAll);
  EXPECT_TRUE(program_->DialogsDone());
  EXPECT_EQ(Grid().ApproximateCount(), 4);
}

}  // namespace
}  // namespace varnlog::app::test
