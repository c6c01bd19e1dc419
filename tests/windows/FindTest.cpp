#include <QCheckBox>
#include <QLabel>

#include "logview/frmFind.h"
#include "tests/windows/MainWindow.h"

namespace varnlog::app::test {
namespace {

using core::literals::operator""_key;
using enum CommandId;

class Find : public MainWindow {
 protected:
  void Looks(const char* text) {
    program_->Triggers(mnuEditFind);
    auto& line = Child<QLineEdit>(program_->Window(), "txtFind");
    EXPECT_TRUE(line.hasFocus());
    line.clear();
    QTest::keyClicks(&line, text);
    RunningProgram::Settle();
    QTest::qWait(50);
  }
  [[nodiscard]] QString Label(const char* name) {
    auto& label = Child<QLabel>(program_->Window(), name);
    return label.isVisible() ? label.text() : QString();
  }
  void Presses(const char* child, Qt::Key key) {
    QTest::keyClick(&Child<QWidget>(program_->Window(), child), key);
    RunningProgram::Settle();
  }
};

TEST_F(Find, LeavesWhatIsTypedAndKeepsOrderPlaceAndEntries) {
  Starts();
  program_->Enters(2, kVoltageColumn, "61");
  Looks("ABEL");
  EXPECT_EQ(Patients(), (Names{"Abel", "Abel"}));
  EXPECT_EQ(Label("lblCount"), "2 von 4");
  program_->ClicksHeading(logview::kDateColumn);
  EXPECT_EQ(program_->ColumnTexts(logview::kDateColumn), (QStringList{"04.02.2020", "06.03.2021"}));
  EXPECT_EQ(program_->ColumnTexts(logview::kNumberColumn), (QStringList{"1", "2"}));
  EXPECT_TRUE(program_->Window().Results()->Headline().ends_with("(gesucht: ABEL)"));
  program_->Triggers(mnuSortAll);
  Looks("nirgends");
  EXPECT_EQ(program_->Grid().ApproximateCount(), 0);
  EXPECT_EQ(program_->Grid().EmptyText(), program_->Text("FD_NOTHING"_key));
  Looks("zander");
  program_->Grid().SetCurrentCell(0, logview::kTypeColumn);
  Presses("txtFind", Qt::Key_Escape);
  EXPECT_EQ(Patients(), (Names{"Abel", "O'Hara", "Abel", "Zander"}));
  EXPECT_EQ(program_->Grid().Row(), 3) << "the exposure stays the current one";
  EXPECT_TRUE(program_->Grid().hasFocus());
  EXPECT_FALSE(Child<QWidget>(program_->Window(), "frmFind").isVisible());
}

TEST_F(Find, EntriesAreTakenBackWhereverTheirRowsStandNow) {
  Starts();
  program_->Enters(2, kVoltageColumn, "61");
  Looks("abel");
  program_->Grid().SetCurrentCell(0, logview::kTypeColumn);
  program_->Window().Results()->TakeBackEntry();
  EXPECT_EQ(program_->Grid().CellText(1, kVoltageColumn), "");
}

TEST_F(Find, MissingValuesAreCountedShownAndVisited) {
  Starts();
  RunningProgram::Settle();
  QTest::qWait(50);
  EXPECT_EQ(Label("pnlIncomplete"), "unvollständig: 2") << "the suite gave the others its default";
  program_->Grid().SetCurrentCell(0, 0);
  const auto goesTo = [this](CommandId command) {
    program_->Triggers(command);
    return std::pair(program_->Grid().Row(), program_->Grid().Col());
  };
  EXPECT_EQ(goesTo(mnuEditNextMissing), std::pair(0, kVoltageColumn));
  EXPECT_EQ(goesTo(mnuEditNextMissing), std::pair(2, kVoltageColumn));
  EXPECT_EQ(goesTo(mnuEditPreviousMissing), std::pair(0, kVoltageColumn));
  EXPECT_EQ(goesTo(mnuEditPreviousMissing), std::pair(0, kVoltageColumn));
  EXPECT_EQ(program_->Beeps(), 1);
  program_->Enters(2, kVoltageColumn, "61");
  EXPECT_EQ(Label("pnlIncomplete"), "unvollständig: 1");
  program_->Triggers(mnuEditIncomplete);
  EXPECT_TRUE(program_->Window().Action(mnuEditIncomplete)->isChecked());
  EXPECT_EQ(program_->ColumnTexts(logview::kDateColumn), QStringList{"06.03.2021"});
  program_->Triggers(mnuEditIncomplete);
  EXPECT_EQ(Patients().size(), 4U);
}

}  // namespace
}  // namespace varnlog::app::test
