#include "logview/Columns.h"
#include "tests/desktop/RealProgram.h"

namespace varnlog::desktop {
namespace {

using core::literals::operator""_key;

constexpr int kVoltageColumn = 7;

TEST_F(RealProgram, AValueCorrectedIsLockedOnceTheProgramWasLeft) {
  StartsAndUpdates();
  SortsByPatient();
  const Wanted voltage = Cell(0, kVoltageColumn);
  EXPECT_EQ(desktop_.Sees(voltage, "the voltage").Text("description"), Text("RS_STATE_OPEN"_key));
  for (const char* entered : {"63", "65"}) {
    Enters(voltage, entered);
    EXPECT_EQ(Stored("tXraySVolt"), entered);
  }
  EXPECT_EQ(Stored("tXrayBEdVolt"), "1");
  const Wanted pregnancy = Cell(0, logview::kPregnancyColumn);
  desktop_.ClicksButtonOf(desktop_.Sees(pregnancy, "the pregnancy"));
  desktop_.ClicksOn(Named("ListItem", Text("RC_PREGUNKNOWN"_key)), "an entry of the list that was opened");
  desktop_.Sees(
      [&](const Part& part) { return pregnancy(part) && part.Name() == Text("RC_PREGUNKNOWN"_key); },
      "a cell with the entry");
  EXPECT_EQ(Stored("tXraySPreg"), "-");
  Quits();
  EXPECT_EQ(Stored("tXrayBEdVolt"), "0");

  desktop_.Starts();
  SortsByPatient();
  const Part locked = desktop_.Sees(voltage, "the voltage");
  EXPECT_EQ(locked.Name(), "65");
  EXPECT_TRUE(locked.Text("description").startsWith(Text("RS_STATE_LOCKED"_key))) << "then who entered it";
  desktop_.Clicks(locked);
  desktop_.Types("7");
  Answers("RS_ERR_CHANGE"_key, "GL_OK"_key);
  desktop_.Presses("End");
  Enters(Cell(0, logview::kCommentColumn), "Karies 36");
  EXPECT_EQ(Stored("tXraySVolt"), "65");
  EXPECT_EQ(Stored("tXraySComment"), "Karies 36");

  installation_.Reports({cli::NewExposure("Berger", "XP", "07.01.2016", "12:34:56")});
  desktop_.Presses("ctrl+u");
  Answers("RU_SUCCESS"_key, "GL_OK"_key);
  // Nobody but the program itself gives the keys back here.
  desktop_.Sees([](const Part& part) { return part.Role() == "TopWindow" && part.IsFocused(); }, "the focus");
  Quits();
}

}  // namespace
}  // namespace varnlog::desktop
