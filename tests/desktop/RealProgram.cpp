#include "tests/desktop/RealProgram.h"

#include <stdexcept>

#include <QJsonArray>
#include <QJsonDocument>

#include "logview/Columns.h"
#include "tests/Paths.h"
#include "ui/QtText.h"

namespace varnlog::desktop {

using core::literals::operator""_key;

RealProgram::RealProgram(int exposures) {
  globals_.ProgramFolderGl = installation_.program().string();
  if (!texts_.InitLanguage()) throw std::runtime_error(texts_.InitError());
  const cli::Ended simulated = installation_.Shell(
      "'" VARNLOG_SUITE_DIR "/exposure-simulator' --invalid 0 --count " + std::to_string(exposures) +
      " --file '" + installation_.exchangeFile().string() + "'");
  if (simulated.status != 0) throw std::runtime_error(simulated.err);
  tools::Exposure exposure = cli::NewExposure("Aachen", "XP", "07.01.2015", "12:34:56");
  exposure.volt.clear();
  installation_.Reports({exposure});
}

QString RealProgram::Text(core::TextKey key) const {
  return ui::Caption(texts_, key);
}

QString RealProgram::Stored(const char* field) const {
  const cli::Ended list = installation_.Ctl("list --format json");
  EXPECT_EQ(list.status, 0) << list.err;
  for (const QJsonValue& row : QJsonDocument::fromJson(QByteArray::fromStdString(list.out)).array()) {
    if (row["tXraySName"] == "Aachen") return row[QLatin1String(field)].toVariant().toString();
  }
  return "not in the log";
}

void RealProgram::Answers(core::TextKey question, core::TextKey button) {
  const QString firstLine = Text(question).section('\r', 0, 0).section('\n', 0, 0);
  desktop_.Sees(Saying(firstLine), std::string(question.name()));
  desktop_.ClicksOn(Named("Button", Text(button)), std::string(button.name()));
}

void RealProgram::StartsAndUpdates() {
  desktop_.Starts();
  Answers("RC_XRNOTUPDATED"_key, "GL_YES"_key);
  Answers("RU_SUCCESS"_key, "GL_OK"_key);
}

void RealProgram::SortsByPatient() {
  desktop_.ClicksOn(Named("ColumnHeader", Text("RS_PATIENT"_key)), "the heading of the patients");
  desktop_.Sees(
      [](const Part& part) {
        return Cell(0, logview::kPatientColumn)(part) && part.Name().startsWith("Aachen");
      },
      "Aachen in the first row");
}

void RealProgram::Enters(const Wanted& cell, const char* text) {
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

void RealProgram::Quits() {
  desktop_.Presses("ctrl+q");
  Answers("RC_QUIT"_key, "GL_YES"_key);
  EXPECT_EQ(desktop_.Ends(), 0);
}

}  // namespace varnlog::desktop
