#include <fstream>
#include <map>

#include <QDragEnterEvent>
#include <QMimeData>
#include <QUrl>

#include "tests/windows/MainWindow.h"

// What a run does that was started with a log, or is handed one.

namespace varnlog::app::test {
namespace {

namespace fs = std::filesystem;
using core::literals::operator""_key;
using enum CommandId;

class StartedWithALog : public MainWindow {
 protected:
  void SetUp() override {
    MainWindow::SetUp();
    Starts();
    ASSERT_TRUE(program_->Quits());
    program_.reset();
    fs::create_directory(archive_.parent_path());
    fs::copy_file(installation_.log(), archive_);
    installation_.Reports({cli::NewExposure("Neu", "XI", "01.01.2022", "08:00:00")});
  }
  void StartsWith(bool isInspection) {
    program_ = std::make_unique<RunningProgram>(installation_, core::MessageAnswer::kNo,
                                                StartedWith{archive_.string(), isInspection});
  }
  /// Every file with its content and when it was changed.
  std::map<std::string, std::pair<std::string, fs::file_time_type>> Files() {
    std::map<std::string, std::pair<std::string, fs::file_time_type>> files;
    for (const auto& entry : fs::recursive_directory_iterator(installation_.suite())) {
      if (!entry.is_regular_file()) continue;
      std::ifstream file(entry.path(), std::ios::binary);
      files[entry.path().string()] = {{std::istreambuf_iterator<char>(file), {}}, entry.last_write_time()};
    }
    return files;
  }

  fs::path archive_ = installation_.suite() / "Archiv" / "Varnlog 2020.mdb";
};

TEST_F(StartedWithALog, AnInspectionLeavesNoTrace) {
  const auto before = Files();
  StartsWith(true);
  EXPECT_EQ(program_->Grid().ApproximateCount(), 4);
  EXPECT_TRUE(program_->TakeMessages().empty()) << "nothing is offered";
  EXPECT_FALSE(program_->Window().Action(mnuEditUpdate)->isEnabled());
  EXPECT_TRUE(program_->Window().windowTitle().contains(program_->Text("MN_STATUS_INSPECTION"_key)));
  program_->Enters(0, kVoltageColumn, "63");
  EXPECT_EQ(program_->Grid().CellText(0, kVoltageColumn), "");
  EXPECT_EQ(program_->TakeMessages(), QStringList(program_->Text("MN_STATUS_INSPECTIONTIP"_key)));
  program_->ClicksHeading(logview::kDateColumn);
  program_->Triggers(mnuViewBigIcons);
  emit qApp->applicationStateChanged(Qt::ApplicationActive);
  QTest::qWait(300);
  program_->AnswersWith(core::MessageAnswer::kYes);
  ASSERT_TRUE(program_->Quits());
  EXPECT_TRUE(Files() == before);
}

TEST_F(StartedWithALog, TheSettingsKeepNamingThePracticesOwn) {
  StartsWith(false);
  EXPECT_EQ(program_->Globals().strDataFileGl, archive_.string());
  EXPECT_TRUE(program_->Window().windowTitle().contains(program_->Text("MN_OTHERLOG"_key)));
  program_->AnswersWith(core::MessageAnswer::kYes);
  ASSERT_TRUE(program_->Quits());
  Starts();
  EXPECT_EQ(program_->Globals().strDataFileGl, installation_.log().string());
  program_->Window().OpenWhenFree(archive_.string(), OpenFor::kThisRun);
  EXPECT_EQ(program_->Globals().strDataFileGl, archive_.string()) << "handed over by another copy";
  ASSERT_TRUE(program_->Quits());
  Starts();
  EXPECT_EQ(program_->Globals().strDataFileGl, installation_.log().string());
}

TEST_F(StartedWithALog, ALogThatIsDroppedIsOpenedWhenNoDialogIsOpen) {
  Starts();
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(QString::fromStdString(archive_.string()))});
  program_->InDialog("frmBegEnd", [&](QDialog& dialog) {
    QDragEnterEvent enters({}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&program_->Window(), &enters);
    EXPECT_TRUE(enters.isAccepted());
    QDropEvent drops(QPointF(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&program_->Window(), &drops);
    QTest::qWait(400);
    EXPECT_EQ(program_->Globals().strDataFileGl, installation_.log().string());
    Cancels(dialog);
  });
  program_->Triggers(mnuSortDateAll);
  EXPECT_TRUE(QTest::qWaitFor([this] { return program_->Globals().strDataFileGl == archive_.string(); }));
}

}  // namespace
}  // namespace varnlog::app::test
