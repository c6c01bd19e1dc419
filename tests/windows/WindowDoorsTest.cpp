#include <map>

#include "seals/History.h"
#include "seals/SealedFields.h"
#include "tests/windows/MainWindow.h"

// Whatever is typed where: nothing but what is open changes, and each change has its author.

namespace varnlog::app::test {
namespace {

using Row = std::map<std::string, std::string>;

class WindowDoors : public MainWindow {
 protected:
  void SetUp() override {
    tools::Exposure open = cli::NewExposure("Offen", "XI", "03.02.2020", "08:00:00");
    for (std::string* const value : {&open.pregCode, &open.typeExtra, &open.responsible, &open.radDur,
                                     &open.volt, &open.cur, &open.dose})
      value->clear();
    tools::Exposure given = cli::NewExposure("Fest", "XI", "02.02.2020", "08:00:00");
    given.sex = "M";
    installation_.Reports({open, given});
    Starts();
  }
  std::vector<Row> Rows() {
    std::vector<Row> all;
    installation_.WithLog(false, [&](dao::Database& log) {
      const auto rows = log.OpenRecordset("SELECT TXray.* From TXray ORDER BY TXray.tXrayTs DESC;");
      for (; !rows->IsEOF(); rows->MoveNext()) {
        Row& row = all.emplace_back();
        for (const std::string& field : seals::SealedFields()) row[field] = rows->Fields(field).Text();
      }
    });
    return all;
  }
  std::size_t Entries(std::int64_t exposure) {
    std::size_t entries = 0;
    installation_.WithLog(false,
                          [&](dao::Database& log) { entries = seals::ReadHistory(log, exposure).size(); });
    return entries;
  }
  static bool IsOpen(const logview::Column& column, const Row& row) {
    if (!column.IsWritten() || (column.exceptForMen && row.at("tXraySSex") == "m")) return false;
    return column.editFlag.empty() || row.at(std::string(column.editFlag)) == "1";
  }
  void ChoosesNext(int row, int column) {
    program_->Window().activateWindow();
    program_->Grid().SetCurrentCell(row, column);
    program_->Grid().setFocus();
    RunningProgram::Settle();
    QTest::keyClick(&program_->Grid(), Qt::Key_Down, Qt::AltModifier);
    RunningProgram::Settle();
    QWidget* const list = QApplication::activePopupWidget();
    if (list == nullptr) return;
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Return})
      QTest::keyClick(list->focusWidget() != nullptr ? list->focusWidget() : list, key);
    RunningProgram::Settle();
  }
  /// Types into every cell; the result is the number of values that changed.
  int TriesEveryDoor(const QString& text) {
    int changed = 0;
    for (std::size_t row = 0; row < 2; ++row) {
      for (int index = 0; index < logview::kColumnCount; ++index) {
        const logview::Column& column = logview::kColumns.at(static_cast<std::size_t>(index));
        const Row before = Rows()[row];
        const std::int64_t exposure = std::stoll(before.at("tXrayCulIntIDPk"));
        const std::size_t entries = Entries(exposure);
        if (column.IsList()) {
          ChoosesNext(static_cast<int>(row), index);
        } else {
          program_->Enters(static_cast<int>(row), index, text);
        }
        Row expected = before;
        const Row after = Rows()[row];
        const bool isOpen = IsOpen(column, before);
        if (isOpen) expected[std::string(column.field)] = after.at(std::string(column.field));
        EXPECT_EQ(after, expected) << "row " << row << ", column " << index;
        EXPECT_EQ(after != before, isOpen) << "row " << row << ", column " << index;
        EXPECT_EQ(Entries(exposure), entries + (isOpen ? 1 : 0)) << "row " << row << ", column " << index;
        changed += isOpen ? 1 : 0;
      }
    }
    return changed;
  }
};

TEST_F(WindowDoors, NoCellTakesWhatIsNotOpen) {
  EXPECT_EQ(TriesEveryDoor("9"), 9 + 2) << "and nothing but retake and comment where all was given";
  ASSERT_TRUE(program_->Quits());
  Starts();
  EXPECT_EQ(TriesEveryDoor("8"), 2) << "the comments";
}

}  // namespace
}  // namespace varnlog::app::test
