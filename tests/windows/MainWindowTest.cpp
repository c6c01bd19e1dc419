#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

#include "tests/windows/MainWindow.h"

namespace varnlog::app::test {
namespace {

using core::SelectionKind;
using core::literals::operator""_key;
using enum CommandId;

TEST_F(MainWindow, LeavesThemAfterANoUntilTheUpdateIsAskedFor) {
  Starts(core::MessageAnswer::kNo);
  const QString offer = program_->TakeMessages().value(0);
  EXPECT_TRUE(offer.startsWith(program_->Text("RC_XRNOTUPDATED"_key).section('$', 0, 0)));
  EXPECT_TRUE(offer.contains(QString::fromStdString(installation_.log().string()))) << "which log";
  EXPECT_EQ(program_->Grid().ApproximateCount(), 0);
  emit qApp->applicationStateChanged(Qt::ApplicationActive);
  QTest::qWait(400);
  EXPECT_EQ(program_->Grid().ApproximateCount(), 0) << "declined";
  program_->Triggers(mnuEditUpdate);
  EXPECT_EQ(program_->Grid().ApproximateCount(), 4);
  EXPECT_TRUE(Child<QLabel>(program_->Window(), "pnlRows").text().contains("4"));
  installation_.Reports({cli::NewExposure("Neu", "XI", "01.01.2022", "08:00:00")});
  program_->Grid().SetCurrentCell(3, logview::kCommentColumn);
  emit qApp->applicationStateChanged(Qt::ApplicationActive);
  EXPECT_TRUE(QTest::qWaitFor([this] { return program_->Grid().ApproximateCount() == 5; }, 10'000));
  EXPECT_EQ(program_->Grid().ApproximateCount(), 5) << "activation updates again, without a question";
  EXPECT_EQ(program_->Grid().Row(), 4) << "on the same exposure as before";
  EXPECT_EQ(program_->Grid().Col(), int{logview::kCommentColumn});
  const auto meaning = [this](int row) { return program_->Grid().Model().Description(row, 0); };
  EXPECT_EQ(meaning(0), program_->Text("RS_STATE_NEW"_key));
  EXPECT_EQ(meaning(1), "") << "came with the update before";
  (void)program_->TakeMessages();
  program_->Triggers(mnuEditUpdate);
  EXPECT_EQ(program_->TakeMessages(), QStringList(program_->Text("MN_NOXR"_key)));
}

TEST_F(MainWindow, AHeadingSortsAndTheNumbersHeadingBeeps) {
  Starts();
  program_->ClicksHeading(logview::kPatientColumn);
  const Names once = Patients();
  program_->ClicksHeading(logview::kPatientColumn);
  const Names twice = Patients();
  EXPECT_EQ(once, Names({"Abel", "Abel", "O'Hara", "Zander"}));
  EXPECT_EQ(twice, Names({"Zander", "O'Hara", "Abel", "Abel"}));
  const int beeps = program_->Beeps();
  program_->ClicksHeading(logview::kNumberColumn);
  EXPECT_EQ(program_->Beeps(), beeps + 1);
  EXPECT_EQ(Patients(), twice);
  // The frame of the log is rebuilt when its file was worked on.
  program_->Window().Results()->ReloadGrid();
  EXPECT_TRUE(program_->Grid().horizontalHeader()->isSortIndicatorShown());
  EXPECT_EQ(program_->Grid().horizontalHeader()->sortIndicatorSection(), logview::kPatientColumn);
}

TEST_F(MainWindow, EachSelectionShowsItsRowsAndACancelledOneChangesNothing) {
  Starts();
  const auto year = [](QDialog& dialog) { EntersPeriod(dialog, "1.1.2020", "31.12.2020"); };
  const auto abel = [](QDialog& dialog) { SearchesAndTakes(dialog, "Abel"); };
  using Step = std::pair<const char*, std::function<void(QDialog&)>>;
  struct Row {
    CommandId command;
    std::vector<Step> dialogs;
    SelectionKind kind;
    std::size_t rows;
  };
  const Row rows[] = {
      {mnuSortDateAll, {{"frmBegEnd", year}}, SelectionKind::kPeriod, 3},
      {mnuSortDateAllXI, {{"frmBegEnd", year}}, SelectionKind::kPeriodXI, 2},
      {mnuSortDateAllXP, {{"frmBegEnd", Cancels}}, SelectionKind::kPeriodXI, 2},
      {mnuSortDateAllXP, {{"frmBegEnd", year}}, SelectionKind::kPeriodXP, 1},
      {mnuSortDateAllXV, {{"frmBegEnd", year}}, SelectionKind::kPeriodXV, 0},
      {mnuSortPatAll, {{"frmPatSearch", abel}}, SelectionKind::kPatient, 2},
      {mnuSortPatPeriod, {{"frmPatSearch", Cancels}}, SelectionKind::kPatient, 2},
      {mnuSortPatPeriod, {{"frmPatSearch", abel}, {"frmBegEnd", Cancels}}, SelectionKind::kPatient, 2},
      {mnuSortPatPeriod, {{"frmPatSearch", abel}, {"frmBegEnd", year}}, SelectionKind::kPatientPeriod, 1},
      {mnuSortAll, {}, SelectionKind::kAll, 4},
  };
  for (const Row& row : rows) {
    const std::string name(Def(row.command).name);
    for (const auto& [dialog, user] : row.dialogs) program_->InDialog(dialog, user);
    program_->Triggers(row.command);
    EXPECT_TRUE(program_->DialogsDone()) << name;
    EXPECT_EQ(program_->Globals().SortSelectionGl, row.kind) << name;
    EXPECT_EQ(Patients().size(), row.rows) << name;
  }
}

TEST_F(MainWindow, ThePatientSearchSurvivesAnyEntry) {
  Starts();
  (void)program_->TakeMessages();
  program_->InDialog("frmPatSearch", [&](QDialog& dialog) {
    for (const QString& entry : {QString("'"), QString("["), QString("O'Hara"), QString("%"), QString("Nemo"),
                                 QString(1000, 'x'), QString("\" OR 1=1 --")}) {
      Child<QLineEdit>(dialog, "txtSearch").setText(entry);
      Child<QPushButton>(dialog, "cmdSearch").click();
      const bool told = !program_->TakeMessages().isEmpty();
      const bool found = Child<QTreeWidget>(dialog, "lvwPat").topLevelItemCount() > 0;
      EXPECT_NE(told, found) << entry.toStdString() << ": either a list or a message";
    }
    const QStringList apostrophe(program_->Text("PS_ERR_APOSTROPHE"_key));
    Child<QLineEdit>(dialog, "txtSearch").setText("O'H");
    Child<QPushButton>(dialog, "cmdSearch").click();
    EXPECT_EQ(program_->TakeMessages(), apostrophe);
    Child<QLineEdit>(dialog, "txtSearch").setText("abel,k");
    Child<QPushButton>(dialog, "cmdSearch").click();
    EXPECT_EQ(Child<QTreeWidget>(dialog, "lvwPat").topLevelItemCount(), 1) << "without the blank";
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
    EXPECT_EQ(program_->TakeMessages(), apostrophe) << "found, but not to be chosen";
    Cancels(dialog);
  });
  program_->Triggers(mnuSortPatAll);
  EXPECT_TRUE(program_->DialogsDone());
  EXPECT_EQ(program_->Grid().ApproximateCount(), 4);
}

}  // namespace
}  // namespace varnlog::app::test
