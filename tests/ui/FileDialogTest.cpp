#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTimer>
#include <gtest/gtest.h>

#include "tests/support/Table.h"
#include "ui/FileDialog.h"

namespace varnlog::ui::test {
namespace {

TEST(NameFilters, ComeFromPairsOfTextAndPatterns) {
  for (const auto& [filter, expected] : Table<const char*, QStringList>{
           {"Kontrollbuch (*.mdb)|*.mdb|Alle Dateien (*.*)|*.*",
            {"Kontrollbuch (*.mdb)", "Alle Dateien (*)"}},
           {"Logs|*.mdb;*.md0", {"Logs (*.mdb *.md0)"}},
           {"Журнал|*.mdb", {"Журнал (*.mdb)"}},
           {"Old (Jet 3) files|*.mdb", {"Old (Jet 3) files (*.mdb)"}},
           {"no patterns", {}},
           {"empty||Logs|*.mdb", {"Logs (*.mdb)"}},
           {"", {}},
       }) {
    EXPECT_EQ(NameFilters(filter), expected) << filter;
  }
}

class FileDialogTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(folder_.isValid());
    folderPath_ = folder_.filePath("Böse Ordner");
    ASSERT_TRUE(QDir().mkpath(folderPath_));
    for (const char* name : {"Praxis.mdb", "notes.txt"}) {
      QFile file(folderPath_ + '/' + name);
      ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    dialog_.SetInitDir(folderPath_.toStdString());
    dialog_.SetDialogTitle("Röntgenkontrollbuch öffnen");
    dialog_.SetFilter("Logs|*.mdb");
    dialog_.SetDefaultExt("MDB");
  }
  static void WhenShown(const std::function<void(QFileDialog&)>& user) {
    QTimer::singleShot(50, [user] {
      auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      user(*dialog);
    });
  }
  [[nodiscard]] std::string Chosen(const QString& name) const {
    return QDir::toNativeSeparators(folderPath_ + '/' + name).toStdString();
  }
  static void Enters(QFileDialog& dialog, const QString& name) {
    dialog.findChild<QLineEdit*>("fileNameEdit")->setText(name);
    QMetaObject::invokeMethod(&dialog, "accept");
  }

  QTemporaryDir folder_;
  QString folderPath_;
  CFileDialog dialog_;
};

TEST_F(FileDialogTest, OpensInTheFolderUnderItsTitle) {
  WhenShown([this](QFileDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), "Röntgenkontrollbuch öffnen");
    EXPECT_EQ(dialog.directory().path(), folderPath_);
    EXPECT_EQ(dialog.nameFilters(), QStringList{"Logs (*.mdb)"});
    Enters(dialog, "Praxis.mdb");
  });
  EXPECT_EQ(dialog_.ShowOpen(nullptr), Chosen("Praxis.mdb"));
}

TEST_F(FileDialogTest, CancelGivesNothing) {
  WhenShown([](QFileDialog& dialog) { dialog.reject(); });
  EXPECT_EQ(dialog_.ShowOpen(nullptr), std::nullopt);
}

TEST_F(FileDialogTest, AFolderThatIsGoneIsNoObstacle) {
  dialog_.SetInitDir("/no/such\\folder");
  WhenShown([](QFileDialog& dialog) {
    EXPECT_TRUE(dialog.directory().exists());
    dialog.reject();
  });
  EXPECT_EQ(dialog_.ShowOpen(nullptr), std::nullopt);
}

TEST_F(FileDialogTest, SavingAddsTheExtension) {
  WhenShown([](QFileDialog& dialog) { Enters(dialog, "Bericht"); });
  EXPECT_EQ(dialog_.ShowSave(nullptr), Chosen("Bericht.MDB"));
}

}  // namespace
}  // namespace varnlog::ui::test
