#include <QDateEdit>
#include <QMenu>
#include <QTimer>
#include <QTreeWidget>

#include "tests/Paths.h"
#include "tests/windows/MainWindow.h"
#include "ui/FileDialog.h"

namespace varnlog::app::test {
namespace {

namespace fs = std::filesystem;
using enum CommandId;

/// Copies and the inspection folder from the window.
class HandOver : public MainWindow {
 protected:
  void SetUp() override {
    MainWindow::SetUp();
    Starts();
    fs::create_directory(folder_);
    fs::create_symlink(fs::path(VARNLOG_PROGRAM_DIR) / "varnlogctl", installation_.program() / "varnlogctl");
    (void)program_->TakeMessages();
  }
  ~HandOver() override { ui::CFileDialog::AnswerWith({}); }
  static bool Soon(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 20'000); }
  [[nodiscard]] std::size_t Files() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
  }

  const fs::path folder_ = installation_.suite() / "Ablage";
};

TEST_F(HandOver, ACopyIsMadeAndBroughtBackAfterAQuestion) {
  program_->InDialog("frmBackup", [this](QDialog& dialog) {
    Child<QLineEdit>(dialog, "txtFolder").setText(QString::fromStdString(folder_.string()));
    Child<QPushButton>(dialog, "cmdNow").click();
    ASSERT_TRUE(Soon([&] { return Child<QTreeWidget>(dialog, "lstBackups").topLevelItemCount() == 1; }));
    EXPECT_EQ(Files(), 2U) << "the copy and its digest";
    Child<QPushButton>(dialog, "cmdClose").click();
  });
  program_->Triggers(mnuFileBackup);
  ASSERT_TRUE(program_->DialogsDone());
  program_->Enters(0, kVoltageColumn, "63");
  (void)program_->TakeMessages();
  program_->InDialog("frmBackup", [](QDialog& dialog) {
    Child<QPushButton>(dialog, "cmdRestore").click();
    Child<QPushButton>(dialog, "cmdClose").click();
  });
  program_->Triggers(mnuFileBackup);
  EXPECT_EQ(Stored("tXraySVolt"), "") << "as it was when the copy was made";
  EXPECT_TRUE(program_->TakeMessages().join('\n').contains(QString::fromStdString(folder_.string())))
      << "the question names the copy";
  EXPECT_EQ(program_->Grid().ApproximateCount(), 4);
}

TEST_F(HandOver, APatientsRecordIsSavedWhateverHisNameHolds) {
  const fs::path file = folder_ / "Nachweis.pdf";
  ui::CFileDialog::AnswerWith([&](const ui::CFileDialog& dialog) {
    EXPECT_TRUE(dialog.FileName().find("O") != std::string::npos) << dialog.FileName();
    return file.string();
  });
  program_->Grid().SetCurrentCell(1, logview::kPatientColumn);
  ASSERT_TRUE(program_->Grid().CellText(1, logview::kPatientColumn).startsWith("O'Hara"));
  QTimer::singleShot(200, [&] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    const QString wanted = program_->Text(core::TextKey("RS_PATIENTPDF"));
    for (QAction* action : menu->actions())
      if (action->text() == wanted) action->trigger();
    menu->close();
  });
  emit program_->Grid().customContextMenuRequested(QPoint(5, 5));
  const std::string text = installation_.Shell("pdftotext '" + file.string() + "' -").out;
  EXPECT_EQ(text.find("Zander"), std::string::npos);
  EXPECT_NE(text.find("O'Hara"), std::string::npos) << text;
}

TEST_F(HandOver, TheInspectionFolderIsMadeWhereItIsWanted) {
  ui::CFileDialog::AnswerWith([this](const ui::CFileDialog&) { return folder_.string(); });
  program_->InDialog("frmInspection", [](QDialog& dialog) {
    Child<QDateEdit>(dialog, "dtpFrom").setDate(QDate(2020, 1, 1));
    Child<QPushButton>(dialog, "cmdMake").click();
  });
  program_->Triggers(mnuFileInspection);
  EXPECT_EQ(Files(), 2U) << "the folder and its archive; "
                         << program_->TakeMessages().join(' ').toStdString();
}

}  // namespace
}  // namespace varnlog::app::test
