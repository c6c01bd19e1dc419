#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <gtest/gtest.h>

#include "app/Language.h"
#include "logview/Columns.h"
#include "tests/cli/Installation.h"
#include "tests/desktop/Desktop.h"
#include "ui/QtText.h"

namespace varnlog::desktop {
namespace {

using db::literals::operator""_key;

constexpr int kVoltageColumn = 7;

/// The real program on a display of its own, on the demo's installation.
class RealProgram : public testing::Test {
 protected:
  RealProgram() {
    globals_.ProgramFolderGl = installation_.program().string();
    if (!texts_.InitLanguage()) throw std::runtime_error(texts_.InitError());
    const cli::Ended simulated =
        installation_.Shell("'" VARNLOG_SUITE_DIR "/exposure-simulator' --invalid 0 --count 60 --file '" +
                            installation_.exchangeFile().string() + "'");
    if (simulated.status != 0) throw std::runtime_error(simulated.err);
    tools::Exposure exposure = cli::NewExposure("Aachen", "XP", "07.01.2015", "12:34:56");
    exposure.volt.clear();
    installation_.Reports({exposure});
  }

  [[nodiscard]] QString Text(db::TextKey key) const { return ui::Caption(texts_, key); }
  [[nodiscard]] QString FirstLine(db::TextKey key) const {
    return Text(key).section('\r', 0, 0).section('\n', 0, 0);
  }

  /// What the log holds of the patient who was added to the demo, as anybody else reads it.
  [[nodiscard]] QString Stored(const char* field) const {
    const cli::Ended list = installation_.Ctl("list --format json");
    EXPECT_EQ(list.status, 0) << list.err;
    for (const QJsonValue& row : QJsonDocument::fromJson(QByteArray::fromStdString(list.out)).array()) {
      if (row["tXraySName"] == "Aachen") return row[QLatin1String(field)].toVariant().toString();
    }
    return "not in the log";
  }

  void Answers(db::TextKey question, db::TextKey button) {
    desktop_.Sees(Saying(FirstLine(question)), std::string(question.name()));
    desktop_.ClicksOn(Named("Button", Text(button)), std::string(button.name()));
  }

  /// The added patient's exposure stands first once the rows are sorted by patient.
  void SortsByPatient() {
    desktop_.ClicksOn(Named("ColumnHeader", Text("RS_PATIENT"_key)), "the heading of the patients");
    desktop_.Sees(
        [](const Part& part) {
          return Cell(0, logview::kPatientColumn)(part) && part.Name().startsWith("Aachen");
        },
        "Aachen in the first row");
  }
  /// Clicks the cell, types over what it holds and confirms.
  void Enters(const Wanted& cell, const char* text) {
    const auto focused = [&](const Part& part) { return cell(part) && part.IsFocused(); };
    const Part there = desktop_.Sees(cell, "the cell");
    // A click on the current cell would open it.
    if (!there.IsFocused()) desktop_.Clicks(there);
    desktop_.Sees(focused, "the cell that was clicked");
    desktop_.Types(text);
    desktop_.Sees([&](const Part& part) { return part.Role() == "Focus" && part.Text("value") == text; },
                  std::string("an editor with ") + text);
    desktop_.Presses("Return");
    desktop_.Sees([&](const Part& part) { return cell(part) && part.Name() == text; },
                  std::string("a cell with ") + text);
  }
  void Quits() {
    desktop_.Presses("ctrl+q");
    Answers("RC_QUIT"_key, "GL_YES"_key);
    EXPECT_EQ(desktop_.Ends(), 0);
  }

  cli::Installation installation_{testing::UnitTest::GetInstance()->current_test_info()->name()};
  db::Globals globals_;
  app::Language texts_{globals_};
  Desktop desktop_{installation_.program().string()};
};

TEST_F(RealProgram, AValueCorrectedIsLockedOnceTheProgramWasLeft) {
  desktop_.Starts();
  Answers("RC_XRNOTUPDATED"_key, "GL_YES"_key);
  Answers("RU_SUCCESS"_key, "GL_OK"_key);
  SortsByPatient();
  const Wanted voltage = Cell(0, kVoltageColumn);
  EXPECT_EQ(desktop_.Sees(voltage, "the voltage").Text("description"), Text("RS_STATE_OPEN"_key));
  for (const char* entered : {"63", "65"}) {
    Enters(voltage, entered);
    EXPECT_EQ(Stored("tXraySVolt"), entered);
  }
  EXPECT_EQ(Stored("tXrayBEdVolt"), "1");
  Quits();
  EXPECT_EQ(Stored("tXrayBEdVolt"), "0");

  desktop_.Starts();
  SortsByPatient();
  const Part locked = desktop_.Sees(voltage, "the voltage");
  EXPECT_EQ(locked.Name(), "65");
  EXPECT_EQ(locked.Text("description"), Text("RS_STATE_LOCKED"_key));
  desktop_.Clicks(locked);
  desktop_.Types("7");
  Answers("RS_ERR_CHANGE"_key, "GL_OK"_key);
  desktop_.Presses("End");
  Enters(Cell(0, logview::kCommentColumn), "Karies 36");
  EXPECT_EQ(Stored("tXraySVolt"), "65");
  EXPECT_EQ(Stored("tXraySComment"), "Karies 36");
  Quits();
}

}  // namespace
}  // namespace varnlog::desktop
