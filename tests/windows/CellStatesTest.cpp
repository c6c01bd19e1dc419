#include <QHeaderView>

#include "logview/Columns.h"
#include "tests/windows/RunningProgram.h"

namespace varnlog::app::test {
namespace {

using core::literals::operator""_key;

constexpr int kVoltageColumn = 7;

/// What the state of a cell means to those who do not see its colour.
TEST(CellStates, TellWhatCanBeEnteredAndForHowLong) {
  const cli::Installation installation("CellStates");
  tools::Exposure exposure = cli::NewExposure("Zander", "XI", "03.02.2020", "08:00:00");
  exposure.volt.clear();
  installation.Reports({exposure});
  RunningProgram program(installation);
  const auto meaning = [&](int column) { return program.Grid().Model().StateText(0, column); };

  EXPECT_EQ(meaning(kVoltageColumn), program.Text("RS_STATE_OPEN"_key));
  program.Enters(0, kVoltageColumn, "63");
  EXPECT_EQ(meaning(kVoltageColumn), program.Text("RS_STATE_PENDING"_key));
  program.Enters(0, kVoltageColumn, "64");
  EXPECT_EQ(program.Grid().CellText(0, kVoltageColumn), "64") << "pending is still open";
  program.Enters(0, logview::kCommentColumn, "o. B.");
  EXPECT_EQ(meaning(logview::kCommentColumn), program.Text("RS_STATE_ALWAYS"_key));

  program.Grid().ClickHeading(kVoltageColumn);
  EXPECT_EQ(meaning(kVoltageColumn), program.Text("RS_STATE_PENDING"_key)) << "read anew";
  const auto* model = program.Grid().model();
  for (int column = 0; column < logview::kColumnCount; ++column) {
    EXPECT_FALSE(model->headerData(column, Qt::Horizontal, Qt::ToolTipRole).toString().isEmpty()) << column;
  }
}

/// The frame of the log is rebuilt when its file was worked on.
TEST(CellStates, TheSortedHeadingStaysMarkedWhenTheGridIsBuiltAnew) {
  const cli::Installation installation("SortMark");
  installation.Reports({cli::NewExposure("Zander", "XI", "03.02.2020", "08:00:00")});
  RunningProgram program(installation);
  program.Grid().ClickHeading(logview::kPatientColumn);
  program.Window().Results()->ReloadGrid();
  EXPECT_TRUE(program.Grid().horizontalHeader()->isSortIndicatorShown());
  EXPECT_EQ(program.Grid().horizontalHeader()->sortIndicatorSection(), logview::kPatientColumn);
}

}  // namespace
}  // namespace varnlog::app::test
