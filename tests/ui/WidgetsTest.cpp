#include <QApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QTextDocument>
#include <QToolButton>
#include <gtest/gtest.h>

#include "tests/Paths.h"
#include "tests/support/FakeTexts.h"
#include "ui/GridColors.h"
#include "ui/KeyNames.h"
#include "ui/QtText.h"
#include "ui/Theme.h"
#include "ui/Toolbar.h"

namespace varnlog::ui::test {
namespace {

QPalette Dark() {
  QPalette palette(QColor(53, 53, 53), QColor(53, 53, 53));
  palette.setColor(QPalette::WindowText, QColor(240, 240, 240));
  return palette;
}

class IconTest : public ::testing::Test {
 protected:
  void TearDown() override { QApplication::setPalette(before_); }

  /// The best contrast that any opaque pixel of the picture has with the window behind it.
  static double BestContrast(const QPixmap& pixmap) {
    const QImage image = pixmap.toImage();
    const QColor window = QApplication::palette().color(QPalette::Window);
    double best = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        if (image.pixelColor(x, y).alpha() > 250) {
          best = std::max(best, Contrast(image.pixelColor(x, y), window));
        }
      }
    }
    return best;
  }

  QPalette before_ = QApplication::palette();
};

TEST_F(IconTest, EveryCommandHasOneThatStandsOutInLightAndDark) {
  for (const QPalette& palette : {QPalette(QColor(239, 239, 239)), Dark()}) {
    QApplication::setPalette(palette);
    for (const char* name : {"New", "Open", "Update", "Print", "Preview", "PatAll", "PatPeriod", "DateAll",
                             "All", "Help", "ZoomIn", "ZoomOut", "FitWidth", "FitPage", "FirstPage",
                             "PreviousPage", "NextPage", "LastPage", "SavePdf"}) {
      const QIcon icon = ThemedIcon(name);
      ASSERT_FALSE(icon.isNull()) << name;
      for (const int size : {16, 32, 64}) {
        EXPECT_GT(BestContrast(icon.pixmap(QSize(size, size))), 4.5) << name << " at " << size;
      }
    }
  }
  EXPECT_TRUE(ThemedIcon("NoSuchIcon").isNull());
}

TEST_F(IconTest, FollowsAChangeOfTheTheme) {
  QApplication::setPalette(QPalette(QColor(239, 239, 239)));
  const QIcon icon = ThemedIcon("Print");
  const QImage light = icon.pixmap(QSize(32, 32)).toImage();
  EXPECT_FALSE(IsDark(QApplication::palette()));
  QApplication::setPalette(Dark());
  EXPECT_TRUE(IsDark(QApplication::palette()));
  EXPECT_NE(icon.pixmap(QSize(32, 32)).toImage(), light);
}

TEST_F(IconTest, IsDrawnForTheScaleOfTheScreen) {
  const QPixmap pixmap = ThemedIcon("Help").pixmap(QSize(16, 16), 2.0);
  EXPECT_EQ(pixmap.size(), QSize(32, 32));
  EXPECT_EQ(pixmap.devicePixelRatio(), 2.0);
  QImage image = pixmap.toImage();
  image.setDevicePixelRatio(1.0);
  EXPECT_EQ(image, ThemedIcon("Help").pixmap(QSize(32, 32)).toImage()) << "drawn for 200 %, not stretched";
}

TEST_F(IconTest, NoDrawingIsLeftOutOfTheProgram) {
  const QDir drawings(VARNLOG_SOURCE_DIR "/resources/icons");
  const QStringList files = drawings.entryList({"*.svg"});
  EXPECT_GT(files.size(), 15);
  for (const QString& file : files) EXPECT_TRUE(QFile::exists(":/icons/" + file)) << file.toStdString();
}

TEST(Toolbar, IsRebuiltFromItsCommandsInBothSizes) {
  QAction open;
  open.setToolTip("Öffnen");
  QAction help;
  Toolbar bar;
  const std::vector<ToolbarItem> items = {{"Open", &open}, {"Sep1"}, {"Help", &help}};
  bar.Build(items, true);
  EXPECT_EQ(bar.iconSize(), QSize(32, 32));
  bar.Build(items, false);
  EXPECT_EQ(bar.iconSize(), QSize(16, 16));
  EXPECT_EQ(bar.actions().size(), 3);
  EXPECT_TRUE(bar.actions().at(1)->isSeparator());
  EXPECT_EQ(bar.Command("Open"), &open);
  EXPECT_EQ(bar.Command("open"), nullptr) << "letter case counts";
  EXPECT_EQ(bar.Command("Sep1"), nullptr);
  int clicked = 0;
  QObject::connect(&open, &QAction::triggered, &bar, [&clicked] { ++clicked; });
  auto* button = bar.findChild<QToolButton*>("Open");
  ASSERT_NE(button, nullptr);
  EXPECT_EQ(button->accessibleName(), "Öffnen");
  button->click();
  EXPECT_EQ(clicked, 1);
  open.setEnabled(false);
  EXPECT_FALSE(button->isEnabled());
}

TEST(KeyNames, StandInMenusAsInTheHelp) {
  const varnlog::test::FakeTexts texts;
  KeyNames names(texts);
  QCoreApplication::installTranslator(&names);
  EXPECT_EQ(QKeySequence("Ctrl+Shift+PgUp").toString(QKeySequence::NativeText),
            "GL_KEY_CTRL+GL_KEY_SHIFT+GL_KEY_PGUP");
  EXPECT_EQ(QKeySequence("Alt+Return").toString(QKeySequence::NativeText), "Alt+GL_KEY_RETURN");
}

TEST(PlainToolTip, ShowsMarkUpInsteadOfObeyingIt) {
  for (const char* const each : {"/logs/<b>2024</b>/Varnlog.mdb", "a & b", "plain"}) {
    const QString text = QString::fromUtf8(each);
    QTextDocument shown;
    const QString tip = PlainToolTip(text);
    if (Qt::mightBeRichText(tip)) {
      shown.setHtml(tip);
    } else {
      shown.setPlainText(tip);
    }
    EXPECT_EQ(shown.toPlainText(), text);
  }
}

}  // namespace
}  // namespace varnlog::ui::test
