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
    Triggers(mnuEditFind);
    auto& line = Child<QLineEdit>(Window(), "txtFind");
    EXPECT_TRUE(line.hasFocus());
    line.clear();
    QTest::keyClicks(&line, text);
    Settle();
    QTest::qWait(50);
  }
  [[nodiscard]] QString Label(const char* name) {
    auto& label = Child<QLabel>(Window(), name);
    return label.isVisible() ? label.text() : QString();
  }
  void Presses(const char* child, Qt::Key key) {
    QTest::keyClick(&Child<QWidget>(Window(), child), key);
    Settle();
  }
};

TEST_F(Find, LeavesWhatIsTypedAndKeepsOrderPlaceAndEntries) {
  Starts();
  Enters(2, kVoltageColumn, "61");
  Looks("ABEL");
  EXPECT_EQ(Patients(), (Names{"Abel", "Abel"}));
  EXPECT_EQ(Label("lblCount"), "2 von 4");
  ClicksHeading(logview::kDateColumn);
  EXPECT_EQ(ColumnTexts(logview::kDateColumn), (QStringList{"04.02.2020", "06.03.2021"}));
  EXPECT_EQ(ColumnTexts(logview::kNumberColumn), (QStringList{"1", "2"}));
  EXPECT_TRUE(Window().Results()->Headline().ends_with("(gesucht: ABEL)"));
  Triggers(mnuSortAll);
  Looks("nirgends");
  EXPECT_EQ(Grid().ApproximateCount(), 0);
  EXPECT_EQ(Grid().EmptyText(), Text("FD_NOTHING"_key));
  Looks("zander");
  Grid().SetCurrentCell(0, logview::kTypeColumn);
  Presses("txtFind", Qt::Key_Escape);
  EXPECT_EQ(Patients(), (Names{"Abel", "O'Hara", "Abel", "Zander"}));
  EXPECT_EQ(Grid().Row(), 3) << "the exposure stays the current one";
  EXPECT_TRUE(Grid().hasFocus());
  EXPECT_FALSE(Child<QWidget>(Window(), "frmFind").isVisible());
}

TEST_F(Find, EntriesAreTakenBackWhereverTheirRowsStandNow) {
  Starts();
  Enters(2, kVoltageColumn, "61");
  Looks("abel");
  Grid().SetCurrentCell(0, logview::kTypeColumn);
  Window().Results()->TakeBackEntry();
  EXPECT_EQ(Grid().CellText(1, kVoltageColumn), "");
}

TEST_F(Find, MissingValuesAreCountedShownAndVisited) {
  Starts();
  Settle();
  QTest::qWait(50);
  EXPECT_EQ(Label("pnlIncomplete"), "unvollständig: 2") << "the suite gave the others its default";
  Grid().SetCurrentCell(0, 0);
  const auto goesTo = [this](CommandId command) {
    Triggers(command);
    return std::pair(Grid().Row(), Grid().Col());
  };
  EXPECT_EQ(goesTo(mnuEditNextMissing), std::pair(0, kVoltageColumn));
  EXPECT_EQ(goesTo(mnuEditNextMissing), std::pair(2, kVoltageColumn));
  EXPECT_EQ(goesTo(mnuEditPreviousMissing), std::pair(0, kVoltageColumn));
  EXPECT_EQ(goesTo(mnuEditPreviousMissing), std::pair(0, kVoltageColumn));
  EXPECT_EQ(program_->Beeps(), 1);
  Enters(2, kVoltageColumn, "61");
  EXPECT_EQ(Label("pnlIncomplete"), "unvollständig: 1");
  Triggers(mnuEditIncomplete);
  EXPECT_TRUE(Window().Action(mnuEditIncomplete)->isChecked());
  EXPECT_EQ(ColumnTexts(logview::kDateColumn), QStringList{"06.03.2021"});
  Triggers(mnuEditIncomplete);
  EXPECT_EQ(Patients().size(), 4U);
}

}  // namespace
}  // namespace varnlog::app::test
