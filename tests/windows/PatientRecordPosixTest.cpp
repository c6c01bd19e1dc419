#include <QMenu>
#include <QTimer>

#include "tests/windows/MainWindow.h"
#include "ui/FileDialog.h"

namespace varnlog::app::test {
namespace {

namespace fs = std::filesystem;

class PatientRecord : public MainWindow {
 protected:
  void SetUp() override {
    MainWindow::SetUp();
    Starts();
  }
  ~PatientRecord() override { ui::CFileDialog::AnswerWith({}); }
};

TEST_F(PatientRecord, IsSavedWhateverHisNameHolds) {
  const fs::path file = installation_.suite() / "Nachweis.pdf";
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

}  // namespace
}  // namespace varnlog::app::test
